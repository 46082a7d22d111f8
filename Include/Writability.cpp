#include "Writability.h"

#include "Text.h"

#include <cstddef>

namespace Tovra::DBus
{

namespace
{

// A receiver refuses a message whose values lie deeper than this (arrays, dictionary entries and
// variants count one each), and the bus closes the connection that sent it.
constexpr unsigned nDeepest = 64;

// A system bus takes messages of 32 MiB; some of it is left for the header.
constexpr std::size_t nLargest = 32u * 1024 * 1024 - 64 * 1024;

// The most that padding, a length and a closing zero add to a text, an array or an entry.
constexpr std::size_t nOverhead = 16;

/** Walks a tree once, adding up what it takes on the wire. */
class Examination
{
public:
    bool Passes(const Data& data, unsigned nDepth, bool inVariant)
    {
        if (data.IsVariant() && !inVariant) {
            ++nDepth;
            nSize += nOverhead;
        }
        if (nDepth > nDeepest)
            return false;
        switch (data.GetType()) {
        case Data::Bool:
        case Data::UInt32:
            return PassesSize(0);
        case Data::String:
            return PassesText(data.As<std::string>());
        case Data::ObjectPath:
            return Text::IsObjectPath(data.ObjectPathText()) &&
                   PassesSize(data.ObjectPathText().size());
        case Data::Array:
            return PassesArray(data, nDepth);
        case Data::Dictionary:
            return PassesDictionary(data, nDepth);
        case Data::Variant:
        case Data::Invalid:
        case Data::Empty:
            break;
        }
        return false;
    }

private:
    bool PassesSize(std::size_t nBytes)
    {
        nSize += nBytes + nOverhead;
        return nSize <= nLargest;
    }

    bool PassesText(const std::string& sText)
    {
        return PassesSize(Text::IsString(sText) ? sText.size() : 3 * sText.size());
    }

    static bool IsElementType(Data::Type type)
    {
        return type != Data::Array && type != Data::Dictionary && Data::TypeCode(type) != nullptr;
    }

    bool PassesElement(const Data& element, Data::Type elementType, unsigned nDepth)
    {
        const bool bAgrees = elementType == Data::Variant
                                 ? element.IsVariant()
                                 : element.GetType() == elementType && !element.IsVariant();
        return bAgrees && Passes(element, nDepth, false);
    }

    bool PassesArray(const Data& data, unsigned nDepth)
    {
        if (!IsElementType(data.GetElementType()) || !PassesSize(0))
            return false;
        for (const Data& element : data.As<std::vector<Data>>()) {
            if (!PassesElement(element, data.GetElementType(), nDepth + 1))
                return false;
        }
        return true;
    }

    bool PassesDictionary(const Data& data, unsigned nDepth)
    {
        if (!IsElementType(data.GetElementType()) || !PassesSize(0))
            return false;
        for (const auto& [sKey, value] : data.As<std::map<std::string, Data>>()) {
            if (!PassesText(sKey) || !PassesElement(value, data.GetElementType(), nDepth + 2))
                return false;
        }
        return true;
    }

    std::size_t nSize = 0;
};

} // namespace

bool IsWritable(const Data& data, bool inVariant)
{
    return Examination().Passes(data, inVariant ? 1 : 0, inVariant);
}

} // namespace Tovra::DBus
