#pragma once

#include "simulator/Value.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace Tovra::Simulator
{

/**
 * Reads the fields of a JSON object. What is absent leaves its variable as it is; what has the
 * wrong type, and in `Finish` what nobody read, throws Problem with the field's name and what would
 * be right.
 */
class Fields
{
public:
    /** `sWhere`: what the object is called in a complaint, for example "services[3]". */
    Fields(const Json& read, std::string sName);

    void Read(const char* pName, std::string& sValue);
    void Read(const char* pName, std::optional<std::string>& sValue);
    void Read(const char* pName, bool& bValue);
    void Read(const char* pName, unsigned& nValue, unsigned nMost = 1000000000);
    void Read(const char* pName, std::chrono::milliseconds& value);
    void Read(const char* pName, std::vector<std::string>& vecValues);

    /** One of the words. */
    void Read(const char* pName, std::string& sValue, const std::vector<std::string>& vecWords);

    /** Throws Problem if the field is absent. */
    std::string ReadRequired(const char* pName);

    /** Null if absent. */
    const Json* Find(const char* pName);
    const Json* FindList(const char* pName);

    /** What a field of this object is called in a complaint. */
    std::string Name(const std::string& sField) const;

    /** To be called when everything has been read. */
    void Finish() const;

private:
    const Json& object;
    std::string sWhere;
    std::vector<std::string> vecKnown;
};

/** "a, b or c" */
std::string Enumerate(const std::vector<std::string>& vecWords);

} // namespace Tovra::Simulator
