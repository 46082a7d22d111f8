#pragma once

#include "tests/support/Waiting.h"

#include <map>
#include <ostream>
#include <string>
#include <sys/types.h>
#include <vector>

namespace Tovra::TestSupport
{

/** A program that runs beside the test, on pipes or in a terminal of its own. It ends with this. */
class Session
{
public:
    enum class Ends { Pipes, Terminal };

    /** `vecCommand`: the program's path, then its arguments. Throws std::runtime_error. */
    explicit Session(std::vector<std::string> vecCommand, Ends ends = Ends::Pipes,
                     const std::map<std::string, std::string>& mapEnvironment = {});
    ~Session();

    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    pid_t GetId() const { return nProcess; }

    /** To its standard input; in a terminal, as if typed. */
    void Write(const std::string& sText) const;
    void CloseInput();

    /** Closes the reader's end of its standard output. */
    void CloseOutput();

    /**
     * Whether the text came before the time was over: in what was written since the text that was
     * last waited for. In a terminal everything is output.
     */
    bool AwaitOutput(const std::string& sText);
    bool AwaitErrors(const std::string& sText);

    void Signal(int nSignal) const;

    /** Of a terminal: whether it shows what is typed, line by line. */
    bool ShowsWhatIsTyped() const;

    /** Waits for the end; its exit status, or -1 when a signal ended it or the time was over. */
    int AwaitExit(std::chrono::milliseconds limit = deadline);

    /** All that was written so far. */
    const std::string& GetOutput() const { return output.sText; }
    const std::string& GetErrors() const { return errors.sText; }

private:
    struct Stream {
        int nFile = -1;
        std::string sText;
        std::size_t nAwaited = 0;

        void Close();
    };

    bool Await(Stream& stream, const std::string& sText);
    bool Read(std::chrono::steady_clock::time_point until);
    bool HasEnded();

    pid_t nProcess = -1;
    int nStatus = 0;
    int nInput = -1;
    Stream output;
    Stream errors;
};

/** How a program ended, and what it wrote. */
struct Outcome {
    int nExit = -1;
    std::string sOutput;
    std::string sErrors;
};

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);

} // namespace Tovra::TestSupport
