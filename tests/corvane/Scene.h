#pragma once

#include "simulator/Daemon.h"
#include "simulator/Json.h"
#include "tests/corvane/Session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace Tovra
{

using Json = nlohmann::json; // in which the order of fields does not matter
using TestSupport::deadline;
using TestSupport::Eventually;
using TestSupport::Outcome;
using TestSupport::Session;

/**
 * The program `corvane` with a simulated ConnMan, an /opt of its own, and as the host's executable
 * the program itself.
 */
class Scene : public testing::Test
{
protected:
    Scene();

    /** Networks as people have them; nothing takes long, and nothing happens by itself. */
    static Simulator::Scenario Neighbourhood();

    /** The same with two cables of one name: the first is in use, shown is the other, idle one. */
    static Simulator::Scenario WithAnotherCable();

    void StartConnMan(const Simulator::Scenario& scenario = Neighbourhood());

    /** Starts `corvane` with these arguments. */
    static std::unique_ptr<Session> Start(std::vector<std::string> vecArguments,
                                          Session::Ends ends = Session::Ends::Pipes,
                                          std::map<std::string, std::string> mapEnvironment = {});

    /** The same in a terminal. */
    static std::unique_ptr<Session>
    StartInTerminal(std::vector<std::string> vecArguments,
                    std::map<std::string, std::string> mapEnvironment = {});

    /** Runs `corvane` on pipes to its end. */
    static Outcome Run(std::vector<std::string> vecArguments, const std::string& sInput = "");

    /** The same with --json: the one line that it wrote. */
    static Json RunForJson(std::vector<std::string> vecArguments, int nExit = 0,
                           const std::string& sInput = "");

    /** What has been sent to ConnMan, but for what each start sends; once every host has gone. */
    std::vector<std::string> TakeCommands();

    /** Asks the agent of the host that sent "Connect", as ConnMan does; the answer as JSON. */
    std::string AskForPassphrase(const std::string& sPath);

    /** Waits until a network is in this state. */
    bool AwaitState(const std::string& sPath, const std::string& sState);

    /** A file below /opt. */
    static std::string MakeFile(const std::string& sText);

    static std::string PathOf(const std::string& sIdentifier);

    /** Where hosts listen for events. */
    static std::string GetEventDirectory();

    std::unique_ptr<Simulator::Daemon> pConnMan;
};

constexpr const char* pPassphrase = "apple pie 42";

} // namespace Tovra
