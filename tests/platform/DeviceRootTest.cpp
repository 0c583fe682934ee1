// Device paths under a root, and the removal commands run on them.
#include "platform/DeviceRoot.h"
#include "platform/VXFile.h"
#include "platform/VXLogger.h"
#include "platform/sy_system.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

namespace {

constexpr const char* kDir = "/mnt/mtd/code/config_file/";

// Sets or clears $SENSOR_DEVICE_ROOT for one test and puts back the old value.
class EnvRoot {
public:
    explicit EnvRoot(const char* value) {
        const char* old = std::getenv("SENSOR_DEVICE_ROOT");
        m_bHad = old != nullptr;
        m_strOld = old ? old : "";
        value ? ::setenv("SENSOR_DEVICE_ROOT", value, 1) : ::unsetenv("SENSOR_DEVICE_ROOT");
    }
    ~EnvRoot() {
        m_bHad ? ::setenv("SENSOR_DEVICE_ROOT", m_strOld.c_str(), 1)
               : ::unsetenv("SENSOR_DEVICE_ROOT");
    }

private:
    bool m_bHad = false;
    std::string m_strOld;
};

void makeFiles(const sensortest::TempDeviceRoot& root, std::initializer_list<const char*> names) {
    for (const char* name : names) {
        root.writeFile(name, "x");
    }
}

} // namespace

TEST(DeviceRoot, ProgramRootWinsOverTheEnvironment) {
    EnvRoot env("/env/root/");
    EXPECT_EQ("/env/root", DeviceRoot::get());
    EXPECT_EQ("/env/root/tmp/Debug.sign", DeviceRoot::resolve("/tmp/Debug.sign"));
    {
        sensortest::TempDeviceRoot root;
        EXPECT_EQ(root.path(), DeviceRoot::get());
        EXPECT_EQ(root.path() + "/hd1/x.xml", DeviceRoot::resolve("/hd1/x.xml"));
        {
            sensortest::TempDeviceRoot inner;
            EXPECT_EQ(inner.path(), DeviceRoot::get());
        }
        EXPECT_EQ(root.path(), DeviceRoot::get()) << "the outer root comes back";
    }
    EXPECT_EQ("/env/root", DeviceRoot::get()) << "clearing the program root";
    EnvRoot none(nullptr);
    EXPECT_EQ("/mnt/mtd/log/SensorError.log", DeviceRoot::resolve("/mnt/mtd/log/SensorError.log"));
}

TEST(DeviceRoot, NothingIsWrittenOutsideTheRoot) {
    sensortest::TempDeviceRoot root;
    const std::string name = "/mnt/mtd/code/config_file/probe-" + std::to_string(::getpid());
    {
        VXFile file;
        ASSERT_TRUE(file.open((name + ".cfg").c_str(), VXFile::modeWrite | VXFile::modeTruncate));
        file.write("1", 1);
    }
    VXLogger logger;
    ASSERT_TRUE(logger.init(name + ".log", 10240, 3));
    logger.writeLog("[t]", "x");
    EXPECT_TRUE(root.exists(name + ".cfg"));
    EXPECT_TRUE(root.exists(name + ".log"));
    EXPECT_FALSE(std::filesystem::exists(name + ".cfg"));
    EXPECT_FALSE(std::filesystem::exists(name + ".log"));
}

TEST(SySystem, RemovesExactlyThePatternsMatches) {
    sensortest::TempDeviceRoot root;
    makeFiles(root,
              {"/mnt/mtd/code/config_file/sensor1_0.cfg", "/mnt/mtd/code/config_file/sensor1_3.cfg",
               "/mnt/mtd/code/config_file/sensor1_4.cfg", "/mnt/mtd/code/config_file/sensor2_0.cfg",
               "/mnt/mtd/code/config_file/snsversion.cfg", "/mnt/mtd/code/config_old/sensor1_1.cfg",
               "/mnt/mtd/code/factory_setting/sensor1_2.cfg"});
    EXPECT_EQ(0, sy_system("rm -rf /mnt/mtd/code/config*/sensor1_[0-3].cfg", 30));
    EXPECT_FALSE(root.exists("/mnt/mtd/code/config_file/sensor1_0.cfg"));
    EXPECT_FALSE(root.exists("/mnt/mtd/code/config_file/sensor1_3.cfg"));
    EXPECT_FALSE(root.exists("/mnt/mtd/code/config_old/sensor1_1.cfg"));
    EXPECT_TRUE(root.exists("/mnt/mtd/code/config_file/sensor1_4.cfg"));
    EXPECT_TRUE(root.exists("/mnt/mtd/code/config_file/sensor2_0.cfg"));
    EXPECT_TRUE(root.exists("/mnt/mtd/code/config_file/snsversion.cfg"));
    EXPECT_TRUE(root.exists("/mnt/mtd/code/factory_setting/sensor1_2.cfg"));

    makeFiles(root, {"/mnt/mtd/code/config_file/sensor-thermal0.cfg",
                     "/mnt/mtd/code/config_file/sensor-thermal3.cfg"});
    EXPECT_EQ(0, sy_system("rm /mnt/mtd/code/config_file/sensor-thermal*", 30));
    EXPECT_FALSE(root.exists("/mnt/mtd/code/config_file/sensor-thermal0.cfg"));
    EXPECT_FALSE(root.exists("/mnt/mtd/code/config_file/sensor-thermal3.cfg"));
    EXPECT_TRUE(root.exists("/mnt/mtd/code/config_file/sensor2_0.cfg"));
}

TEST(SySystem, MissingMatchesFailOnlyWithoutForce) {
    sensortest::TempDeviceRoot root;
    EXPECT_EQ(0, sy_system("rm -f /mnt/mtd/code/config_file/sensor1_*.cfg", 30));
    EXPECT_EQ(1, sy_system("rm /mnt/mtd/code/config_file/sensor1_*.cfg", 30));
    root.writeFile("/mnt/mtd/code/config_file/sub.cfg/keep", "x");
    EXPECT_EQ(1, sy_system("rm -rf /mnt/mtd/code/config_file/*.cfg", 30)) << "a directory";
    EXPECT_TRUE(root.exists("/mnt/mtd/code/config_file/sub.cfg/keep"));
}

TEST(SySystem, RefusedCommandsRemoveNothing) {
    sensortest::TempDeviceRoot root;
    makeFiles(root, {"/mnt/a.cfg"});
    for (const char* cmd :
         {"ls /mnt/a.cfg", "rm", "rm -f", "rm -x /mnt/a.cfg", "rm -f mnt/a.cfg",
          "rm -f /mnt/../mnt/a.cfg", "rm -f /mnt/a.cfg; rm -f /mnt/a.cfg",
          "rm -f /mnt/a.cfg && true", "rm -f $HOME/mnt/a.cfg", "rm -f `x` /mnt/a.cfg",
          "rm -f '/mnt/a.cfg'", "rm -f /mnt/a.cfg\nrm /x", "rmdir /mnt/a.cfg"}) {
        EXPECT_EQ(-1, sy_system(cmd, 30)) << cmd;
        EXPECT_TRUE(root.exists("/mnt/a.cfg")) << cmd;
    }
    EXPECT_EQ(-1, sy_system(nullptr, 30));
}

TEST(SySystem, NeverReachesOutsideTheRoot) {
    sensortest::TempDeviceRoot outside; // a second directory standing for the host's files
    outside.writeFile("/victim.cfg", "keep");
    sensortest::TempDeviceRoot root;
    outside.writeFile("/mnt/mtd/code/config_file/sensor1_0.cfg", "keep");
    root.writeFile("/mnt/mtd/code/config_file/sensor1_0.cfg", "x");
    std::filesystem::create_symlink(outside.path(), root.hostPath("/mnt/escape"));

    EXPECT_EQ(0, sy_system("rm -f /mnt/mtd/code/config_file/sensor1_0.cfg", 30));
    EXPECT_FALSE(root.exists("/mnt/mtd/code/config_file/sensor1_0.cfg"));
    EXPECT_TRUE(outside.exists("/mnt/mtd/code/config_file/sensor1_0.cfg"));

    EXPECT_EQ(1, sy_system("rm -f /mnt/escape/*.cfg", 30)) << "through a link to outside";
    EXPECT_EQ("keep", outside.readFile("/victim.cfg"));
}
