#include "tests/connman/model/Journal.h"

#include <sstream>

namespace Tovra::ConnManModel
{

namespace
{

std::string Join(const std::vector<std::string>& vecTexts)
{
    std::string sJoined;
    for (const std::string& sText : vecTexts)
        sJoined += " " + sText;
    return sJoined;
}

} // namespace

std::string Journal::Callback(std::size_t nCallback, unsigned nWord)
{
    return "callback " + std::to_string(nCallback) + " with " + std::to_string(nWord);
}

std::string Journal::Callback(std::size_t nCallback, unsigned nWord,
                              const std::vector<std::string>& vecServicePaths,
                              const std::vector<std::string>& vecTechnologyPaths)
{
    return Callback(nCallback, nWord) + "; services:" + Join(vecServicePaths) +
           "; technologies:" + Join(vecTechnologyPaths);
}

std::string Journal::Command(const std::string& sCommand)
{
    return "command " + sCommand;
}

std::string Journal::Removal(const std::string& sConnectedIdentifier)
{
    return "removal of all but " + sConnectedIdentifier;
}

std::string Journal::Log(const TestSupport::LogMessage& message)
{
    std::ostringstream stream;
    stream << message;
    return stream.str();
}

} // namespace Tovra::ConnManModel
