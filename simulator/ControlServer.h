#pragma once

#include "simulator/Daemon.h"

#include <map>
#include <string>

namespace Tovra::Simulator
{

/**
 * Feeds the daemon with lines of JSON, from standard input or from a socket of which many may be
 * clients, and writes an answer to each, until it is told to quit, a signal to end comes or
 * standard input ends.
 */
class ControlServer
{
public:
    /** `sControl`: empty for none, "-" for standard input, else the path of a socket to make. */
    ControlServer(Daemon& controlled, const std::string& sControl);
    ~ControlServer();

    ControlServer(const ControlServer&) = delete;
    ControlServer& operator=(const ControlServer&) = delete;

    void Run();

    /** To be called before any thread is made: from then on the signals are for `Run` alone. */
    static void BlockSignals();

private:
    void Listen();
    void Accept();

    /** False when the end is reached, or "quit" came. */
    bool Read(int nFile);
    bool RunLines(int nFile, std::string& sText);
    void Close(int nFile);

    Daemon& daemon;
    std::string sSocket;
    bool bStandardInput;
    bool bQuit = false;
    int nSignals = -1;
    int nListening = -1;
    std::map<int, std::string> mapTexts; ///< what each reader has not finished with a newline yet
};

} // namespace Tovra::Simulator
