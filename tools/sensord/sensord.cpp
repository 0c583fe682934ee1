// sensord: brings up the channels of a device on the ISP simulator, as the
// camera's host does, and serves their imaging settings on one HTTP port: to
// ONVIF clients (recorders, video-management systems) and to people through
// the tuning page. The HTTP library only carries requests; RequestHandler
// decides every answer.
#include <httplib.h>

#include <csignal>
#include <cstdio>
#include <netinet/tcp.h>
#include <pthread.h>
#include <thread>

#include "tools/HostBringUp.h"
#include "tools/sensord/ChannelService.h"
#include "tools/sensord/Credentials.h"
#include "tools/sensord/RequestHandler.h"
#include "tools/sensord/SensordOptions.h"
#include "tools/sensord/SoapEnvelope.h"

namespace {

constexpr int EXIT_BAD_USE = 2;
// Enough workers for a recorder, a few browsers and the page's polling;
// a connection holds its worker while it is kept alive.
constexpr size_t WORKER_THREADS = 16;
constexpr const char* DEFAULT_USER = "admin";

sensord::HttpRequest toRequest(const httplib::Request& p_objRequest) {
    sensord::HttpRequest stRequest;
    stRequest.strMethod = p_objRequest.method;
    stRequest.strPath = p_objRequest.path;
    stRequest.strBody = p_objRequest.body;
    stRequest.strHost = p_objRequest.get_header_value("Host");
    stRequest.strAuthorization = p_objRequest.get_header_value("Authorization");
    return stRequest;
}

void sendReply(const sensord::HttpReply& p_stReply, httplib::Response& p_objResponse) {
    p_objResponse.status = p_stReply.nStatus;
    for (const auto& stHeader : p_stReply.vecHeaders) {
        p_objResponse.set_header(stHeader.first.c_str(), stHeader.second);
    }
    p_objResponse.set_header("Cache-Control", "no-store");
    p_objResponse.set_content(p_stReply.strBody, p_stReply.strContentType.c_str());
}

bool credentialsFrom(SensordOptions& p_stOptions, std::string& p_strPassword,
                     std::string& p_strError) {
    if (!p_stOptions.strUser.empty()) {
        return readPasswordFile(p_stOptions.strPasswordFile, p_strPassword, p_strError);
    }
    // Without credentials of the user's own, only this machine is served.
    if (p_stOptions.strHost != "127.0.0.1") {
        p_strError = "without --user and --password-file sensord serves 127.0.0.1 only";
        return false;
    }
    p_stOptions.strUser = DEFAULT_USER;
    p_strPassword = sensord::randomPassword(16);
    if (p_strPassword.size() != 16) {
        p_strError = "no random bytes for a password";
        return false;
    }
    return true;
}

int serve(httplib::Server& p_objServer, const SensordOptions& p_stOptions,
          sensord::RequestHandler& p_objHandler, const sigset_t& p_stSignals) {
    const auto bridge = [&p_objHandler](const httplib::Request& p_objRequest,
                                        httplib::Response& p_objResponse) {
        sendReply(p_objHandler.handle(toRequest(p_objRequest)), p_objResponse);
    };
    p_objServer.Get(".*", bridge).Post(".*", bridge).Put(".*", bridge).Delete(".*", bridge);
    p_objServer.set_payload_max_length(sensord::MAX_REQUEST_BYTES);
    // Answers go out at once: the connections inherit TCP_NODELAY from the
    // listening socket, so a small answer does not wait for a delayed ACK.
    p_objServer.set_socket_options([](socket_t nSocket) {
        const int nOn = 1;
        setsockopt(nSocket, SOL_SOCKET, SO_REUSEADDR, &nOn, sizeof(nOn));
        setsockopt(nSocket, IPPROTO_TCP, TCP_NODELAY, &nOn, sizeof(nOn));
    });
    p_objServer.new_task_queue = [] { return new httplib::ThreadPool(WORKER_THREADS); };
    // The library answers an oversized request itself; ONVIF clients get it as a fault.
    p_objServer.set_error_handler(
        [](const httplib::Request& p_objRequest, httplib::Response& p_objResponse) {
            if (p_objResponse.status == 413 && p_objRequest.path.compare(0, 7, "/onvif/") == 0) {
                sendReply(sensord::soapFault(413, "env:Sender", "ter:InvalidArgVal", nullptr,
                                             "the request is larger than 64 KB"),
                          p_objResponse);
            }
        });
    int nPort = p_stOptions.nPort;
    const bool bBound = nPort == 0 ? (nPort = p_objServer.bind_to_any_port(p_stOptions.strHost)) > 0
                                   : p_objServer.bind_to_port(p_stOptions.strHost, nPort);
    if (!bBound) {
        std::fprintf(stderr, "sensord: cannot listen on %s:%d\n", p_stOptions.strHost.c_str(),
                     p_stOptions.nPort);
        return EXIT_BAD_USE;
    }
    std::printf("listening on http://%s:%d\n", p_stOptions.strHost.c_str(), nPort);
    std::fflush(stdout);
    std::thread objStopper([&p_objServer, &p_stSignals] {
        int nSignal = 0;
        sigwait(&p_stSignals, &nSignal);
        p_objServer.stop();
    });
    p_objServer.listen_after_bind();
    pthread_kill(objStopper.native_handle(), SIGTERM); // in case the server ended by itself
    objStopper.join();
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv) {
    SensordOptions stOptions;
    std::string strError;
    if (!parseSensordOptions(argc, argv, stOptions, strError)) {
        std::fprintf(stderr, "sensord: %s\n", strError.c_str());
        printSensordUsage();
        return EXIT_BAD_USE;
    }
    if (stOptions.bHelp) {
        printSensordUsage();
        return EXIT_SUCCESS;
    }
    std::string strPassword;
    const std::string strPasswordFile = stOptions.strPasswordFile;
    if (!credentialsFrom(stOptions, strPassword, strError)) {
        std::fprintf(stderr, "sensord: %s\n", strError.c_str());
        return EXIT_BAD_USE;
    }
    // A client that hangs up mid-answer must not end the server.
    std::signal(SIGPIPE, SIG_IGN);
    // Blocked before any thread starts, so that only the stopper takes them.
    sigset_t stSignals;
    sigemptyset(&stSignals);
    sigaddset(&stSignals, SIGTERM);
    sigaddset(&stSignals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &stSignals, nullptr);

    HostBringUp objBringUp(stOptions.strDevice, stOptions.strRoot);
    if (!objBringUp.prepareRoot(stOptions.bFresh, strError) ||
        !objBringUp.bringUpChannels(strError)) {
        std::fprintf(stderr, "sensord: %s\n", strError.c_str());
        return EXIT_BAD_USE;
    }
    std::printf("sensord: device %s, working root %s, %zu channel%s\n",
                objBringUp.workspace().source().c_str(), objBringUp.workspace().root().c_str(),
                objBringUp.host().count(), objBringUp.host().count() == 1 ? "" : "s");
    // Printed once, last before the address, where the module's start-up
    // output does not bury it.
    if (strPasswordFile.empty()) {
        std::printf("sensord: user %s, password %s (made for this run)\n",
                    stOptions.strUser.c_str(), strPassword.c_str());
    }
    sensord::ChannelService objChannels(objBringUp.host(), objBringUp.clock());
    sensord::Credentials objCredentials(stOptions.strUser, strPassword);
    sensord::RequestHandler objHandler(objChannels, objCredentials, objBringUp.host().machine());
    httplib::Server objServer;
    const int nExit = serve(objServer, stOptions, objHandler, stSignals);
    std::printf("sensord: stopped\n");
    return nExit;
}
