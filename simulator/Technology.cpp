#include "simulator/Technology.h"
#include "simulator/Override.h"

namespace Tovra::Simulator
{

namespace
{

std::string GetName(const TechnologySettings& settings)
{
    static const std::map<std::string, std::string> mapNames = {
        {"wifi", "WiFi"},         {"ethernet", "Wired"}, {"bluetooth", "Bluetooth"},
        {"cellular", "Cellular"}, {"gadget", "Gadget"},  {"p2p", "P2P"}};
    return settings.sName.value_or(mapNames.at(settings.sType));
}

} // namespace

Technology::Technology(TechnologySettings technology)
    : settings(std::move(technology)),
      sPath("/net/connman/technology/" + settings.sType),
      bPowered(settings.bPowered)
{
}

Properties GetProperties(const Technology& technology, Version version)
{
    Properties properties = {{"Name", MakeString(GetName(technology.settings))},
                             {"Type", MakeString(technology.settings.sType)},
                             {"Powered", MakeBool(technology.bPowered)},
                             {"Connected", MakeBool(technology.bConnected)},
                             {"Tethering", MakeBool(technology.settings.bTethering)}};
    if (!technology.sTetheringIdentifier.empty())
        properties.emplace_back("TetheringIdentifier", MakeString(technology.sTetheringIdentifier));
    if (!technology.sTetheringPassphrase.empty())
        properties.emplace_back("TetheringPassphrase", MakeString(technology.sTetheringPassphrase));
    if (version >= Version::V1_41)
        properties.emplace_back("TetheringFreq", MakeInt32(technology.nTetheringFrequency));
    Apply(technology.settings.overrides, properties);
    return properties;
}

} // namespace Tovra::Simulator
