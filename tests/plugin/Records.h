#pragma once

#include "Common/ConnMan.h"

#include <string>

/** ConnMan's records, built by hand. */
namespace Tovra::Records
{

inline ConnMan::NetworkService MakeService(const std::string& sName = "Home",
                                           const std::string& sState = "idle")
{
    std::map<std::string, DBus::Data> mapProperties{
        {"Name", DBus::Data::MakeString(sName, true)},
        {"Type", DBus::Data::MakeString("wifi", true)},
        {"State", DBus::Data::MakeString(sState, true)},
    };
    return ConnMan::NetworkService("/net/connman/service/" + sName, mapProperties);
}

inline ConnMan::NetworkTechnology MakeTechnology(const std::string& sType, bool bPowered,
                                                 const std::string& sName = "Some name")
{
    std::map<std::string, DBus::Data> mapProperties{
        {"Name", DBus::Data::MakeString(sName, true)},
        {"Type", DBus::Data::MakeString(sType, true)},
        {"Powered", DBus::Data::MakeBool(bPowered, true)},
        {"Connected", DBus::Data::MakeBool(false, true)},
    };
    return ConnMan::NetworkTechnology("/net/connman/technology/" + sType, mapProperties);
}

} // namespace Tovra::Records
