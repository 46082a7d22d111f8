#include "simulator/Fields.h"

#include <algorithm>

namespace Tovra::Simulator
{

namespace
{

[[noreturn]] void Fail(const std::string& sField, const std::string& sNeeded, const Json& found)
{
    throw Problem(sField + ": " + sNeeded + " is needed, not " + found.type_name());
}

std::string ToText(const Json& value, const std::string& sField)
{
    if (!value.is_string())
        Fail(sField, "a string", value);
    return value.get<std::string>();
}

} // namespace

Fields::Fields(const Json& read, std::string sName) : object(read), sWhere(std::move(sName))
{
    if (!object.is_object())
        Fail(sWhere.empty() ? "the whole" : sWhere, "an object", object);
}

void Fields::Read(const char* pName, std::string& sValue)
{
    if (const Json* pValue = Find(pName))
        sValue = ToText(*pValue, Name(pName));
}

void Fields::Read(const char* pName, std::optional<std::string>& sValue)
{
    if (const Json* pValue = Find(pName))
        sValue = ToText(*pValue, Name(pName));
}

void Fields::Read(const char* pName, bool& bValue)
{
    const Json* pValue = Find(pName);
    if (!pValue)
        return;
    if (!pValue->is_boolean())
        Fail(Name(pName), "true or false", *pValue);
    bValue = pValue->get<bool>();
}

void Fields::Read(const char* pName, unsigned& nValue, unsigned nMost)
{
    const Json* pValue = Find(pName);
    if (!pValue)
        return;
    const bool bNatural = pValue->is_number_integer() &&
                          (pValue->is_number_unsigned() || pValue->get<std::int64_t>() >= 0);
    if (!bNatural || pValue->get<std::uint64_t>() > nMost)
        throw Problem(Name(pName) + ": a whole number from 0 to " + std::to_string(nMost) +
                      " is needed");
    nValue = pValue->get<unsigned>();
}

void Fields::Read(const char* pName, std::chrono::milliseconds& value)
{
    auto nMilliseconds = static_cast<unsigned>(value.count());
    Read(pName, nMilliseconds);
    value = std::chrono::milliseconds(nMilliseconds);
}

void Fields::Read(const char* pName, std::vector<std::string>& vecValues)
{
    const Json* pList = FindList(pName);
    if (!pList)
        return;
    vecValues.clear();
    for (const Json& value : *pList)
        vecValues.push_back(ToText(value, Name(pName)));
}

void Fields::Read(const char* pName, std::string& sValue, const std::vector<std::string>& vecWords)
{
    Read(pName, sValue);
    if (Find(pName) && std::find(vecWords.begin(), vecWords.end(), sValue) == vecWords.end())
        throw Problem(Name(pName) + ": " + Enumerate(vecWords) + " is needed, not \"" + sValue +
                      "\"");
}

std::string Fields::ReadRequired(const char* pName)
{
    std::optional<std::string> sValue;
    Read(pName, sValue);
    if (!sValue)
        throw Problem(Name(pName) + ": is needed and absent");
    return *sValue;
}

const Json* Fields::Find(const char* pName)
{
    vecKnown.emplace_back(pName);
    const auto field = object.find(pName);
    return field == object.end() ? nullptr : &*field;
}

const Json* Fields::FindList(const char* pName)
{
    const Json* pList = Find(pName);
    if (pList && !pList->is_array())
        Fail(Name(pName), "a list", *pList);
    return pList;
}

std::string Fields::Name(const std::string& sField) const
{
    return sWhere.empty() ? sField : sWhere + "." + sField;
}

void Fields::Finish() const
{
    for (const auto& [sName, value] : object.items())
        if (std::find(vecKnown.begin(), vecKnown.end(), sName) == vecKnown.end()) {
            std::vector<std::string> vecNames = vecKnown;
            std::sort(vecNames.begin(), vecNames.end());
            vecNames.erase(std::unique(vecNames.begin(), vecNames.end()), vecNames.end());
            throw Problem(Name(sName) + ": there is no such field; there is " +
                          Enumerate(vecNames));
        }
}

std::string Enumerate(const std::vector<std::string>& vecWords)
{
    std::string sText;
    for (std::size_t n = 0; n < vecWords.size(); ++n) {
        if (n > 0)
            sText += n + 1 == vecWords.size() ? " or " : ", ";
        sText += vecWords[n];
    }
    return sText;
}

} // namespace Tovra::Simulator
