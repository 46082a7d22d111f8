#pragma once

#include "Common/ConnManImpl.h"
#include "tests/connman/ClientLog.h"
#include "tests/connman/ListData.h"

#include <gtest/gtest.h>

namespace Tovra
{

/**
 * The client's lists without a bus: the test calls the handlers itself, on its own thread. What the
 * client does to the system is only written down.
 */
class OfflineClient : public testing::Test
{
protected:
    OfflineClient() { TestSupport::HostLog::Reset(); }
    ~OfflineClient() override { TestSupport::HostLog::Reset(); }

    /** Writes each word that a callback of this mask receives into vecDone, after the name. */
    void Register(unsigned int mask, const std::string& sName = "")
    {
        client.SetOnNetworksChanged(
            [this, sName](unsigned int word) { vecDone.push_back(sName + std::to_string(word)); },
            mask);
    }

    void UpdateNetworks(const std::vector<ListData::Service>& vecServices, unsigned int flags = 0)
    {
        client.UpdateNetworks(ListData::Services(vecServices), flags);
    }

    void ChangeStrength(const std::string& sPath, std::uint32_t nStrength)
    {
        client.Signal_Service_PropertyChanged(
            sPath, PropertyChanged(DBus::Data::MakeString("Strength"),
                                   DBus::Data::MakeUInt32(nStrength).SetVariant(true)));
    }

    static DBus::Message PropertyChanged(const DBus::Data& name, const DBus::Data& value)
    {
        DBus::Message message(nullptr, "/", nullptr, "PropertyChanged");
        message.Add(name).Add(value);
        return message;
    }

    DBus::Connection connection;      // empty: every call that the client makes goes nowhere
    std::vector<std::string> vecDone; // words, "run" and "remove <identifier>", in order
    ConnMan::Impl client{connection, ConnMan::Impl::SystemActions{
                                         [this](const std::string&) { vecDone.push_back("run"); },
                                         [this](const std::string& sConnected, const auto&) {
                                             vecDone.push_back("remove " + sConnected);
                                         }}};
};

} // namespace Tovra
