#include "Common/AgentFields.h"

#include <typeinfo>

namespace Tovra::AgentFields
{

namespace
{

using DBus::Data;
using Properties = std::map<std::string, Data>;

const std::string& Text(const Properties& properties, const char* pKey)
{
    const auto found = properties.find(pKey);
    if (found == properties.end())
        throw std::bad_cast();
    return found->second.As<std::string>();
}

std::vector<std::string> Alternates(const Properties& properties)
{
    std::vector<std::string> vecAlternates;
    const auto found = properties.find("Alternates");
    if (found == properties.end() || found->second.GetType() != Data::Array)
        return vecAlternates;
    for (const Data& element : found->second.As<std::vector<Data>>())
        vecAlternates.push_back(element.As<std::string>());
    return vecAlternates;
}

} // namespace

std::map<std::string, ConnMan::AgentRequest> Read(const Data& fields,
                                                  const std::function<void()>& fnRetry)
{
    std::map<std::string, ConnMan::AgentRequest> mapRequests;
    for (const auto& [sName, field] : fields.As<Properties>()) {
        const auto& properties = field.As<Properties>();
        const std::string& sRequirement = Text(properties, "Requirement");
        if (sRequirement == "informational") {
            if (sName == "PreviousPassphrase")
                fnRetry();
            continue;
        }
        mapRequests[sName] = {Text(properties, "Type"), sRequirement, Alternates(properties)};
    }
    return mapRequests;
}

Data MakeAnswer(const std::map<std::string, std::string>& mapAnswer)
{
    Data answer = Data::MakeDictionary(Data::Variant);
    auto& mapEntries = answer.As<Properties>();
    for (const auto& [sName, sText] : mapAnswer) {
        // The text is put in last: a copy of it that was moved from would stay readable.
        Data& entry = mapEntries[sName];
        entry = Data::MakeString("", true);
        entry.As<std::string>() = sText;
    }
    return answer;
}

} // namespace Tovra::AgentFields
