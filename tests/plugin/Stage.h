#pragma once

#include "simulator/Daemon.h"
#include "tests/plugin/Host.h"
#include "tests/plugin/PlugInLibrary.h"
#include "tests/support/HostLog.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace Tovra
{

/** Scenarios of few words: nothing happens by itself, and in ConnMan's lists what came first stays
 * first. */
namespace Scenes
{

Simulator::Scenario Quiet(std::vector<Simulator::Network> vecServices = {},
                          std::vector<std::string> vecTechnologies = {"wifi"});

/** A network in the air; its path ends in what is given for its name. */
Simulator::Network Wifi(const std::string& sName, const std::string& sState = "idle");
Simulator::Network Cable(const std::string& sState = "idle");

/** What ConnMan shows as IPv4, whatever the state. */
Simulator::Network WithIPv4(Simulator::Network network, const std::string& sMethod,
                            const std::string& sAddress, const std::string& sNetmask,
                            const std::string& sGateway);
Simulator::Network WithNameservers(Simulator::Network network,
                                   const std::vector<std::string>& vecNameservers);

} // namespace Scenes

/**
 * A host with the plug-in, a simulated ConnMan, and an /opt of their own. The host's command only
 * notes how it was called.
 */
class Stage : public testing::Test
{
protected:
    Stage();

    /** Starts ConnMan, then the host, which reads once. Nothing of that is in any record. */
    void Start(const Simulator::Scenario& scenario);

    void StartConnMan(const Simulator::Scenario& scenario);
    void StartHost();

    int Read() { return pPlugIn->TargetSpecificGetNetworkConfiguration(); }
    int Apply() { return pPlugIn->TargetSpecificSetNetworkConfiguration(); }

    /** Reads until the host's maps are as wanted; false if they never were. */
    bool ReadUntil(const std::function<bool(const DeviceConfig&)>& fnPredicate);

    /**
     * Returns when the plug-in has dispatched all that ConnMan has sent so far, and has sent what
     * that made it ask for; `Settle`, when it has dispatched the answers too.
     */
    void AwaitDispatched();
    void Settle();

    /** The commands since the last time, each as "path member arguments". */
    std::vector<std::string> TakeCommands();

    /** Asks the plug-in's agent, as ConnMan does. */
    Simulator::Reply AskAgent(const std::string& sPath, const Simulator::Json& fields);

    /** The bus name of the plug-in. */
    std::string GetPlugInName() const;

    /** How the host's command was called, a line for each time. */
    static std::vector<std::string> GetHostCommands();

    TestSupport::Host& host = TestSupport::Host::Get();
    std::unique_ptr<Simulator::Daemon> pConnMan;
    ITargetSpecific* pPlugIn = nullptr;

private:
    std::unique_ptr<TestSupport::PlugInLibrary> pLibrary;
    std::string sPlugInName;
};

/** A message of the plug-in's own file, as it stands in the host's log. */
TestSupport::LogMessage PlugInMessage(const char* pFunction, int nLine, const std::string& sText);

} // namespace Tovra
