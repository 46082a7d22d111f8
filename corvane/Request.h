#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Tovra::Corvane
{

struct StaticAddress {
    std::string sAddress;
    std::string sNetmask;
    std::string sGateway;
    std::vector<std::string> vecNameservers;
};

/** What a command line asks for. */
struct Request {
    enum class Command {
        ListTechnologies,
        ListNetworks,
        Show,
        Scan,
        Connect,
        Disconnect,
        Set,
        Power,
        Watch,
        Shell,
        SendEvent,
        Help, ///< sText is to be printed
    };

    Command command = Command::Help;
    std::string sText;       ///< of Help, and the event of SendEvent
    std::string sNetwork;    ///< a network's name or key
    std::string sTechnology; ///< a technology's type or name
    bool bPower = false;
    bool bWps = false;
    std::optional<std::string> sPassphraseFile; ///< "-" is standard input
    std::optional<StaticAddress> address;       ///< of Set; nothing means by DHCP
    std::optional<double> nWaitSeconds;
    bool bJson = false;
    std::string sLibrary;
    std::optional<int> nLogLevel;
};

/**
 * Reads a command line without the program's name. Throws Failure with one line that says what is
 * wrong. `bInShell`: at the prompt, where options of the program as a whole have no place.
 */
Request ReadCommandLine(std::vector<std::string> vecWords, bool bInShell);

/** The commands, for completion. */
const std::vector<std::string>& GetCommandNames();

} // namespace Tovra::Corvane
