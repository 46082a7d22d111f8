#pragma once

#include "simulator/Json.h"

#include <string>
#include <vector>

namespace Tovra::Simulator
{

/**
 * D-Bus values written as JSON, beside the signature that says what they are:
 *
 *   y n q i u x t   number           d   number          b   true or false
 *   s o g           string           h   null (travels as a descriptor of /dev/null)
 *   v               [signature, value]
 *   a...  (...)     list
 *   a{...}          object; or a list of [key, value], for keys that are no strings or come twice
 */

/** One complete type and its value. */
struct Value {
    std::string sSignature;
    Json contents;

    bool operator==(const Value& other) const
    {
        return sSignature == other.sSignature && contents == other.contents;
    }
    bool operator!=(const Value& other) const { return !(*this == other); }
};

/** A message's arguments: a list with one element for each complete type of the signature. */
struct Arguments {
    std::string sSignature;
    Json values = Json::array();
};

Value MakeBool(bool bValue);
Value MakeByte(unsigned nValue);
Value MakeUInt16(unsigned nValue);
Value MakeInt32(int nValue);
Value MakeString(const std::string& sText);
Value MakeObjectPath(const std::string& sPath);
Value MakeStrings(const std::vector<std::string>& vecTexts);

/** Named values in the order in which they are sent. */
using Properties = std::vector<std::pair<std::string, Value>>;

/** The JSON of a variant that holds the value. */
Json MakeVariant(Value value);

/** The JSON of an "a{sv}". */
Json MakeDictionary(Properties properties);
Value MakeDictionaryValue(Properties properties);

/** Nothing's value: 0, "", false, an empty container; of an object path "/". */
Value MakeEmpty(const std::string& sSignature);

/**
 * Throws Problem unless the value is one of the type; `sWhere` is what it is called in the text.
 * A value that passes can be sent.
 */
void CheckValue(const std::string& sType, const Json& value, const std::string& sWhere);
void CheckArguments(const Arguments& arguments, const std::string& sWhere);

/** From ["signature", value]; throws Problem naming `sWhere`. */
Value ReadValue(const Json& pair, const std::string& sWhere);

} // namespace Tovra::Simulator
