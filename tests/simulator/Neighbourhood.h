#pragma once

#include "simulator/Simulation.h"
#include "tests/simulator/FakeOutlet.h"

#include <optional>
#include <string>
#include <vector>

namespace Tovra::Simulator
{

/** A protected network with the passphrase "correct horse". */
Network MakeWifi(const std::string& sName);
Network MakeCable(const std::string& sInterface);

/** With the daemon's usual durations, and technologies for wifi and cables. */
Scenario MakeScenario(std::vector<Network> vecServices);

/** Far more than anything takes but a time-out. */
constexpr std::chrono::seconds aWhile{10};

/** A simulation without a bus, and one client ":1.1" that calls it. */
class Neighbourhood
{
public:
    explicit Neighbourhood(const Scenario& scenario);
    explicit Neighbourhood(std::vector<Network> vecServices);

    /** The answer, if it has come by the time the call returns. */
    std::optional<Reply> Call(const std::string& sPath, const std::string& sInterface,
                              const std::string& sMember, const Arguments& arguments = {},
                              const std::string& sSender = ":1.1");

    std::optional<Reply> Connect(const std::string& sPath, const std::string& sSender = ":1.1");
    std::optional<Reply> Disconnect(const std::string& sPath);
    std::optional<Reply> SetProperty(const std::string& sPath, const std::string& sName,
                                     const Value& value);
    void RegisterAgent(const std::string& sOwner = ":1.1");

    /** Answers what the agent was asked last. */
    void AnswerAgent(const Json& fields);
    void RefuseAgent(const std::string& sError);

    const OutgoingCall& GetQuestion() const { return outlet.vecAsked.back().call; }

    /** The fields that "RequestInput" asked for last: the JSON of an a{sv}. */
    Json GetRequest() const { return GetQuestion().arguments.values[1]; }

    /** The JSON of what the variant holds; null if the property is absent. */
    Json GetProperty(const std::string& sPath, const std::string& sName) const;
    std::string GetState(const std::string& sPath) const;

    FakeOutlet outlet;
    Simulation simulation;
    std::vector<Reply> vecLate; ///< answers that came after their call had returned
};

std::string PathOf(const Network& network);

} // namespace Tovra::Simulator
