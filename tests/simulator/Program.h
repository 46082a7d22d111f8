#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace Tovra::Simulator
{

/** connman-sim in a process of its own, which ends with this object. */
class Program
{
public:
    explicit Program(const std::vector<std::string>& vecArguments);
    ~Program();

    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void Write(const std::string& sLine) const;

    /** The next line; what there is of it at the end. */
    std::string ReadLine() const { return ReadLine(nOutput); }
    std::string ReadErrorLine() const { return ReadLine(nError); }
    static std::string ReadLine(int nFile);

    void CloseInput();
    void Terminate() const;

    /** Its exit status once it has ended; -1 if a signal ended it. */
    int Wait();

private:
    pid_t nProcess = -1;
    int nInput = -1;
    int nOutput = -1;
    int nError = -1;
};

} // namespace Tovra::Simulator
