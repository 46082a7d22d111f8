#include "corvane/Request.h"
#include "corvane/Status.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#ifndef CORVANE_VERSION
#error "the version comes from the build"
#endif

namespace Tovra::Corvane
{

namespace
{

/** The parser together with what it parses into. */
class Parser
{
public:
    explicit Parser(bool bInShell)
    {
        app.require_subcommand(bInShell ? 1 : 0, 1);
        app.name(bInShell ? "" : "corvane");
        app.fallthrough(); // before the commands, which take it over
        app.add_flag("--json", request.bJson, "Print JSON")->configurable(false);
        if (!bInShell)
            AddProgramOptions();
        AddReadingCommands();
        AddChangingCommands();
    }

    Request Parse(std::vector<std::string> vecWords)
    {
        std::reverse(vecWords.begin(), vecWords.end()); // as the parser takes them
        try {
            app.parse(vecWords);
        } catch (const CLI::CallForHelp&) {
            return MakeHelp(GetChosen() == &app ? app.help() : GetChosen()->help(app.get_name()));
        } catch (const CLI::CallForVersion&) {
            return MakeHelp("corvane " CORVANE_VERSION "\n");
        } catch (const CLI::ParseError& error) {
            throw Failure(Status::BadInput, std::string(error.what()) + "; see --help");
        }
        return Finish();
    }

private:
    const CLI::App* GetChosen() const
    {
        const auto vecChosen = app.get_subcommands();
        return vecChosen.empty() ? &app : vecChosen.front();
    }

    static Request MakeHelp(const std::string& sText)
    {
        Request help;
        help.sText = sText;
        return help;
    }

    CLI::App* Add(Request::Command command, const char* pName, const char* pDescription)
    {
        CLI::App* const pCommand = app.add_subcommand(pName, pDescription);
        pCommand->callback([this, command] { request.command = command; });
        return pCommand;
    }

    void AddWait(CLI::App* pCommand)
    {
        pCommand->add_option("--wait", request.nWaitSeconds, "How long to wait for the result")
            ->type_name("SECONDS")
            ->check(CLI::Range(0.0, 3600.0));
    }

    void AddNetwork(CLI::App* pCommand)
    {
        pCommand->add_option("NETWORK", request.sNetwork, "A network's name or key")->required();
    }

    void AddProgramOptions()
    {
        app.set_version_flag("--version", std::string());
        app.add_option("--library", request.sLibrary, "Another plug-in")->type_name("PATH");
        app.add_option("--log", request.nLogLevel, "Log messages of this level and above (0: all)")
            ->type_name("LEVEL")
            ->check(CLI::Range(0, 3));
        pEvent = app.add_option("--ipc-send", sEvent, "Tell running programs of an event");
        pEvent->type_name("EVENT");
        Add(Request::Command::Shell, "shell", "A prompt for all of these commands");
    }

    void AddReadingCommands()
    {
        AddWait(Add(Request::Command::ListTechnologies, "technologies", "List the technologies"));
        AddWait(Add(Request::Command::ListNetworks, "networks", "List the networks"));
        CLI::App* const pShow = Add(Request::Command::Show, "show", "Show all of one network");
        AddNetwork(pShow);
        AddWait(pShow);
        Add(Request::Command::Watch, "watch", "Show changes as they happen, until Ctrl-C");
    }

    void AddChangingCommands()
    {
        AddWait(Add(Request::Command::Scan, "scan", "Look for WiFi networks"));

        CLI::App* const pConnect = Add(Request::Command::Connect, "connect", "Connect a network");
        AddNetwork(pConnect);
        AddWait(pConnect);
        auto* const pFile = pConnect->add_option("--passphrase-file", request.sPassphraseFile,
                                                 "Read the passphrase from it; - is the input");
        pFile->type_name("FILE");
        pConnect->add_flag("--wps", request.bWps, "By the access point's push button")
            ->excludes(pFile);

        CLI::App* const pDisconnect = Add(Request::Command::Disconnect, "disconnect",
                                          "Disconnect a network; WiFi networks are forgotten");
        AddNetwork(pDisconnect);
        AddWait(pDisconnect);

        AddSet();

        CLI::App* const pPower = Add(Request::Command::Power, "power", "Switch a technology");
        pPower->add_option("TECHNOLOGY", request.sTechnology, "wifi, ethernet, ...")->required();
        pPower->add_option("STATE", sPower, "on or off")
            ->required()
            ->check(CLI::IsMember({"on", "off"}));
        AddWait(pPower);
    }

    void AddSet()
    {
        CLI::App* const pSet = Add(Request::Command::Set, "set", "Set a network's address");
        AddNetwork(pSet);
        AddWait(pSet);
        auto* const pDhcp = pSet->add_flag("--dhcp", bDhcp, "By DHCP");
        auto* const pAddress = pSet->add_option("--address", address.sAddress, "IPv4 address");
        auto* const pNetmask = pSet->add_option("--netmask", address.sNetmask, "IPv4 netmask");
        auto* const pGateway = pSet->add_option("--gateway", address.sGateway, "IPv4 gateway");
        auto* const pNameserver =
            pSet->add_option("--nameserver", address.vecNameservers, "May be given several times");
        pNameserver->take_all()->allow_extra_args(false);
        pAddress->needs(pNetmask)->needs(pGateway)->excludes(pDhcp);
        pNetmask->needs(pAddress)->excludes(pDhcp);
        pGateway->needs(pAddress)->excludes(pDhcp);
        pNameserver->needs(pAddress)->excludes(pDhcp);
    }

    Request Finish()
    {
        if (pEvent && pEvent->count() > 0) {
            if (!app.get_subcommands().empty())
                throw Failure(Status::BadInput, "--ipc-send stands alone; see --help");
            request.command = Request::Command::SendEvent;
            request.sText = sEvent;
            return request;
        }
        if (request.command == Request::Command::Help)
            throw Failure(Status::BadInput, "no command; see --help");
        if (request.command == Request::Command::Set) {
            if (!bDhcp && address.sAddress.empty())
                throw Failure(Status::BadInput,
                              "set needs --dhcp, or --address with --netmask and --gateway");
            if (!bDhcp)
                request.address = address;
        }
        request.bPower = sPower == "on";
        return request;
    }

    CLI::Option* pEvent = nullptr;
    CLI::App app{"Reads and changes this device's network settings"};
    Request request;
    StaticAddress address;
    std::string sEvent;
    std::string sPower;
    bool bDhcp = false;
};

} // namespace

Request ReadCommandLine(std::vector<std::string> vecWords, bool bInShell)
{
    return Parser(bInShell).Parse(std::move(vecWords));
}

const std::vector<std::string>& GetCommandNames()
{
    static const std::vector<std::string> vecNames = {"technologies", "networks", "show",
                                                      "scan",         "connect",  "disconnect",
                                                      "set",          "power",    "watch"};
    return vecNames;
}

} // namespace Tovra::Corvane
