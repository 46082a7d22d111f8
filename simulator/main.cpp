#include "simulator/CallLog.h"
#include "simulator/ControlServer.h"
#include "simulator/Lines.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <unistd.h>

namespace Tovra::Simulator
{

namespace
{

struct Options {
    std::string sScenario;
    std::string sAddress;
    std::string sControl;
    bool bRecord = false;
};

void Run(const Options& options)
{
    ControlServer::BlockSignals();
    Daemon daemon(LoadScenario(options.sScenario), options.sAddress);
    if (options.bRecord)
        daemon.SetObserver([](const Call& call) {
            std::cout << ToJson(call).dump() + "\n" << std::flush;
        });
    ControlServer(daemon, options.sControl).Run();
}

int Main(int argc, char** argv)
{
    CLI::App app("A simulated ConnMan: owns net.connman on a bus until it is told to end.",
                 "connman-sim");
    Options options;
    app.add_option("--scenario", options.sScenario, "the world, as JSON")->required();
    app.add_option("--address", options.sAddress, "the bus's address; else the system bus");
    app.add_option("--control", options.sControl,
                   "commands as lines of JSON: from standard input (-) or on a socket made there");
    app.add_flag("--record", options.bRecord, "write each call that comes as a line of JSON");
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& success) {
        return app.exit(success);
    }
    Run(options);
    return EXIT_SUCCESS;
}

} // namespace

} // namespace Tovra::Simulator

int main(int argc, char** argv)
{
    try {
        return Tovra::Simulator::Main(argc, argv);
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "connman-sim: %s\n", exception.what());
        return EXIT_FAILURE;
    }
}
