#include "tests/simulator/Neighbourhood.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

// A start as ConnMan makes it: what is known of services is what is stored.

namespace Tovra::Simulator
{

namespace
{

namespace fs = std::filesystem;

const std::string sHome = PathOf(MakeWifi("Home"));

class SimulatedStart : public testing::Test
{
protected:
    SimulatedStart()
    {
        fs::create_directories(root);
        scenario = MakeScenario({MakeWifi("Home"), MakeWifi("Other")});
        scenario.sStorage = root;
        scenario.bFreshStarts = true;
        scenario.bAutoConnects = true;
    }

    ~SimulatedStart() override { fs::remove_all(root); }

    static void Connect(Neighbourhood& neighbourhood)
    {
        neighbourhood.RegisterAgent();
        neighbourhood.Connect(sHome);
        neighbourhood.AnswerAgent({{"Passphrase", Json::array({"s", "correct horse"})}});
        neighbourhood.outlet.Pass(aWhile);
        ASSERT_EQ(neighbourhood.GetState(sHome), "online");
    }

    static void Restart(Neighbourhood& neighbourhood)
    {
        neighbourhood.simulation.End();
        neighbourhood.outlet.TakeSignals(); // off the bus, nobody hears them
        neighbourhood.simulation.Begin();
    }

    const fs::path root = fs::temp_directory_path() / ("start-" + std::to_string(getpid()));
    Scenario scenario;
};

} // namespace

TEST_F(SimulatedStart, TellsOfAllThereIs)
{
    Neighbourhood neighbourhood(scenario);
    neighbourhood.simulation.Begin();
    EXPECT_EQ(neighbourhood.outlet.GetSignals("TechnologyAdded").size(), 2U);
    neighbourhood.outlet.Pass(aWhile);
    const auto vecChanged = neighbourhood.outlet.GetSignals("ServicesChanged");
    ASSERT_EQ(vecChanged.size(), 1U);
    const Json services = vecChanged[0].arguments.values[0];
    ASSERT_EQ(services.size(), 2U);
    for (const Json& service : services)
        EXPECT_TRUE(service[1].contains("State")) << "in full";
}

TEST_F(SimulatedStart, ConnectsTheNetworkThatIsStored)
{
    Neighbourhood neighbourhood(scenario);
    Connect(neighbourhood);
    Restart(neighbourhood);
    EXPECT_NE(neighbourhood.GetState(sHome), "online");
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(neighbourhood.GetState(sHome), "online");
}

TEST_F(SimulatedStart, OfAnotherDaemonConnectsItToo)
{
    {
        Neighbourhood neighbourhood(scenario);
        Connect(neighbourhood);
    }
    Neighbourhood neighbourhood(scenario);
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(neighbourhood.GetState(sHome), "online");
}

TEST_F(SimulatedStart, KnowsNothingOfANetworkWhoseSettingsAreGone)
{
    Neighbourhood neighbourhood(scenario);
    Connect(neighbourhood);
    fs::remove_all(root);
    EXPECT_EQ(neighbourhood.GetProperty(sHome, "Favorite"), true) << "it has not looked";
    Restart(neighbourhood);
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(neighbourhood.GetState(sHome), "idle");
    EXPECT_EQ(neighbourhood.GetProperty(sHome, "Favorite"), false);
    EXPECT_FALSE(neighbourhood.simulation.GetService(sHome).sPassphrase);
}

TEST_F(SimulatedStart, ANetworkThatComesBackIsWhatWasStoredOfIt)
{
    Neighbourhood neighbourhood(scenario);
    Connect(neighbourhood);
    neighbourhood.simulation.RemoveService(sHome);
    neighbourhood.outlet.Pass(aWhile);
    neighbourhood.simulation.AddService(MakeWifi("Home"));
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(neighbourhood.GetState(sHome), "online");
}

TEST_F(SimulatedStart, GoesOnAsItWasLeftIfThatIsWanted)
{
    scenario.bFreshStarts = false;
    Neighbourhood neighbourhood(scenario);
    Connect(neighbourhood);
    fs::remove_all(root);
    Restart(neighbourhood);
    EXPECT_TRUE(neighbourhood.outlet.TakeSignals().empty());
    EXPECT_EQ(neighbourhood.GetState(sHome), "online");
    EXPECT_EQ(neighbourhood.GetProperty(sHome, "Favorite"), true);
}

} // namespace Tovra::Simulator
