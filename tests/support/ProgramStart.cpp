#include "tests/support/ProgramStart.h"

#include <unistd.h>

namespace Tovra::TestSupport
{

std::vector<char*> Pointers(std::vector<std::string>& vecTexts)
{
    std::vector<char*> vecPointers;
    for (std::string& sText : vecTexts)
        vecPointers.push_back(sText.data());
    vecPointers.push_back(nullptr);
    return vecPointers;
}

std::vector<std::string> MakeEnvironment(const std::map<std::string, std::string>& mapChanges)
{
    std::vector<std::string> vecVariables;
    for (char** pVariable = environ; *pVariable; ++pVariable) {
        const std::string sVariable = *pVariable;
        if (mapChanges.count(sVariable.substr(0, sVariable.find('='))) == 0)
            vecVariables.push_back(sVariable);
    }
    for (const auto& [sName, sValue] : mapChanges)
        vecVariables.push_back(sName + "=" + sValue);
    return vecVariables;
}

} // namespace Tovra::TestSupport
