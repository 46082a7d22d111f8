#include "Wipe.h"

#include <cstring>

namespace Tovra::DBus
{

void Wipe(std::string& sText) noexcept
{
    sText.resize(sText.capacity()); // what an earlier, longer text left there goes too
    explicit_bzero(sText.data(), sText.size());
    sText.clear();
}

void Wipe(Data& data) noexcept
{
    switch (data.GetType()) {
    case Data::String:
        Wipe(data.As<std::string>());
        break;
    case Data::Array:
        for (Data& element : data.As<std::vector<Data>>())
            Wipe(element);
        break;
    case Data::Dictionary:
        for (auto& [sKey, value] : data.As<std::map<std::string, Data>>())
            Wipe(value);
        break;
    default:
        break;
    }
    data = Data();
}

void Wipe(std::map<std::string, std::string>& mapTexts) noexcept
{
    for (auto& [sKey, sText] : mapTexts)
        Wipe(sText);
    mapTexts.clear();
}

} // namespace Tovra::DBus
