#include "platform/sy_system.h"

#include "platform/DeviceRoot.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <glob.h>
#include <memory>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kRefused = -1;
constexpr int kFailed = 1;

// Characters that mean something to a shell beyond plain words and globbing.
constexpr const char* kShellSyntax = ";|&$`<>(){}'\"\\!~\n\r";

struct RemoveCommand {
    bool force = false;
    std::vector<std::string> patterns;
};

bool hasDotDotComponent(const std::string& path) {
    std::stringstream parts(path);
    std::string part;
    while (std::getline(parts, part, '/')) {
        if (part == "..") {
            return true;
        }
    }
    return false;
}

// "-f", "-r", "-rf", "-fR" ...; false for any other option.
bool applyOption(const std::string& option, RemoveCommand& command) {
    if (option.size() < 2) {
        return false;
    }
    for (std::size_t i = 1; i < option.size(); ++i) {
        const char c = option[i];
        if (c == 'f') {
            command.force = true;
        } else if (c != 'r' && c != 'R') {
            return false;
        }
    }
    return true;
}

bool parseCommand(const std::string& text, RemoveCommand& command) {
    if (text.find_first_of(kShellSyntax) != std::string::npos) {
        return false;
    }
    std::istringstream words(text);
    std::string word;
    if (!(words >> word) || word != "rm") {
        return false;
    }
    bool options = true;
    while (words >> word) {
        if (options && word == "--") {
            options = false;
        } else if (options && word.front() == '-') {
            if (!applyOption(word, command)) {
                return false;
            }
        } else {
            options = false;
            if (word.front() != '/' || hasDotDotComponent(word)) {
                return false;
            }
            command.patterns.push_back(word);
        }
    }
    return !command.patterns.empty();
}

std::string realPath(const std::string& path) {
    std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
    return real ? std::string(real.get()) : std::string();
}

// A match lies inside the root when its directory, with every symbolic link
// followed, is the root or below it. (The last component itself is unlinked,
// never followed.)
bool insideRoot(const std::string& match, const std::string& realRoot) {
    const std::string::size_type slash = match.find_last_of('/');
    const std::string dir = realPath(slash == 0 ? "/" : match.substr(0, slash));
    if (dir.empty()) {
        return false;
    }
    return realRoot == "/" || dir == realRoot ||
           dir.compare(0, realRoot.size() + 1, realRoot + "/") == 0;
}

int removeMatch(const std::string& match, const std::string& realRoot, bool force) {
    if (!realRoot.empty() && !insideRoot(match, realRoot)) {
        std::fprintf(stderr, "sy_system: %s lies outside the device root, not removed\n",
                     match.c_str());
        return kFailed;
    }
    struct stat st {};
    if (::lstat(match.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) {
        std::fprintf(stderr, "sy_system: %s is a directory, not removed\n", match.c_str());
        return kFailed;
    }
    if (::unlink(match.c_str()) != 0 && !(force && errno == ENOENT)) {
        std::fprintf(stderr, "sy_system: cannot remove %s: %s\n", match.c_str(),
                     std::strerror(errno));
        return kFailed;
    }
    return 0;
}

int removePattern(const std::string& pattern, const std::string& realRoot, bool force) {
    const std::string hostPattern = DeviceRoot::resolve(pattern);
    glob_t found{};
    const int rc = ::glob(hostPattern.c_str(), 0, nullptr, &found);
    int status = 0;
    if (rc == GLOB_NOMATCH) {
        status = force ? 0 : kFailed;
    } else if (rc != 0) {
        status = kFailed;
    } else {
        for (std::size_t i = 0; i < found.gl_pathc; ++i) {
            if (removeMatch(found.gl_pathv[i], realRoot, force) != 0) {
                status = kFailed;
            }
        }
    }
    ::globfree(&found);
    return status;
}

} // namespace

int sy_system(const char* cmd, int /*timeoutSec*/) {
    RemoveCommand command;
    if (cmd == nullptr || !parseCommand(cmd, command)) {
        std::fprintf(stderr, "sy_system: refused command: %s\n", cmd ? cmd : "(null)");
        return kRefused;
    }
    const std::string root = DeviceRoot::get();
    std::string realRoot;
    if (!root.empty()) {
        realRoot = realPath(root);
        if (realRoot.empty()) {
            std::fprintf(stderr, "sy_system: device root %s does not exist\n", root.c_str());
            return kFailed;
        }
    }
    int status = 0;
    for (const std::string& pattern : command.patterns) {
        if (removePattern(pattern, realRoot, command.force) != 0) {
            status = kFailed;
        }
    }
    return status;
}
