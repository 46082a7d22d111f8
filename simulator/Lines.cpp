#include "simulator/Lines.h"

#include <mutex>
#include <unistd.h>

namespace Tovra::Simulator
{

void WriteLine(int nFile, std::string sLine)
{
    static std::mutex mtxWriting;
    const std::lock_guard<std::mutex> lock(mtxWriting);
    sLine += '\n';
    for (std::size_t nDone = 0; nDone < sLine.size();) {
        const ssize_t nWritten = write(nFile, sLine.data() + nDone, sLine.size() - nDone);
        if (nWritten <= 0)
            return;
        nDone += static_cast<std::size_t>(nWritten);
    }
}

} // namespace Tovra::Simulator
