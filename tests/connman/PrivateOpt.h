#pragma once

#include <set>
#include <string>

/**
 * The /opt that a test program has to itself: the host's command and ConnMan's storage directory.
 */
namespace Tovra::PrivateOpt
{

constexpr const char* pStorage = "/opt/userdata/connman";

/** Throws std::logic_error unless /opt is the process's own. */
void RequirePrivate();

/** Empties /opt. */
void Clear();

/** A file with its directories. */
void WriteFile(const std::string& sPath, const std::string& sText);

/** All of a file; nothing if it is not there. */
std::string ReadFile(const std::string& sPath);

void RemoveFile(const std::string& sPath);

/** Puts a shell script in the place of the host's executable. */
void InstallHostCommand(const std::string& sScript);

/** A settings directory with what ConnMan keeps in one. */
void StoreSettings(const std::string& sName);

/** The names in the storage directory. */
std::set<std::string> GetStored();

/** A file system of its own at a place below /opt, until the end of the scope. */
class Mounted
{
public:
    explicit Mounted(std::string sPlace);
    ~Mounted();

    Mounted(const Mounted&) = delete;
    Mounted& operator=(const Mounted&) = delete;

    void MakeReadOnly() const;

private:
    std::string sPath;
};

} // namespace Tovra::PrivateOpt
