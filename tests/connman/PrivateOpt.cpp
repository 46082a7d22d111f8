#include "tests/connman/PrivateOpt.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <sys/mount.h>
#include <sys/vfs.h>

namespace Tovra::PrivateOpt
{

namespace fs = std::filesystem;

namespace
{

constexpr long nTmpfs = 0x01021994;

} // namespace

void RequirePrivate()
{
    struct statfs status = {};
    if (statfs("/opt", &status) != 0 || status.f_type != nTmpfs ||
        !std::getenv("CORVANE_TEST_PRIVATE_MOUNTS"))
        throw std::logic_error("this is the machine's /opt");
}

void Clear()
{
    RequirePrivate();
    for (const fs::directory_entry& entry : fs::directory_iterator("/opt"))
        fs::remove_all(entry);
}

void WriteFile(const std::string& sPath, const std::string& sText)
{
    RequirePrivate();
    fs::create_directories(fs::path(sPath).parent_path());
    std::ofstream(sPath) << sText;
}

std::string ReadFile(const std::string& sPath)
{
    std::ifstream file(sPath);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

void RemoveFile(const std::string& sPath)
{
    RequirePrivate();
    fs::remove(sPath);
}

void InstallHostCommand(const std::string& sScript)
{
    WriteFile("/opt/tovra/bin/corvane", "#!/bin/sh\n" + sScript);
    fs::permissions("/opt/tovra/bin/corvane", fs::perms::owner_all);
}

void StoreSettings(const std::string& sName)
{
    const std::string sDirectory = std::string(pStorage) + "/" + sName;
    WriteFile(sDirectory + "/settings", "[" + sName + "]\nPassphrase=secret\n");
    WriteFile(sDirectory + "/data", "");
    WriteFile(sDirectory + "/deeper/and/deeper/file", "");
}

std::set<std::string> GetStored()
{
    std::set<std::string> setNames;
    for (const fs::directory_entry& entry : fs::directory_iterator(pStorage))
        setNames.insert(entry.path().filename().string());
    return setNames;
}

Mounted::Mounted(std::string sPlace) : sPath(std::move(sPlace))
{
    RequirePrivate();
    if (mount("none", sPath.c_str(), "tmpfs", 0, nullptr) != 0)
        throw std::runtime_error("cannot mount a file system at " + sPath);
}

Mounted::~Mounted()
{
    umount(sPath.c_str());
}

void Mounted::MakeReadOnly() const
{
    if (mount("none", sPath.c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, nullptr) != 0)
        throw std::runtime_error("cannot make read-only what is at " + sPath);
}

} // namespace Tovra::PrivateOpt
