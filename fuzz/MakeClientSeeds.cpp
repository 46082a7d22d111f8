// Writes the inputs that fuzzing the client starts from: what ConnMan sends, and near misses.

#include "fuzz/FuzzSupport.h"
#include "fuzz/FuzzedMessage.h"

#include <dbus/dbus.h>
#include <fstream>
#include <iostream>

namespace
{

using Tovra::DBus::Data;
using Tovra::DBus::Message;
using Tovra::Fuzz::MakeInput;
using Properties = std::map<std::string, Data>;

/** A path and its properties, as in ConnMan's lists. */
using Entry = std::pair<std::string, Properties>;

Data Text(const char* pText)
{
    return Data::MakeString(pText, true);
}

Data Texts(const std::vector<std::string>& vecTexts)
{
    return Data::MakeStringArray(vecTexts).SetVariant(true);
}

Data Section(Properties properties)
{
    return Data::MakeDictionary(Data::Variant, std::move(properties)).SetVariant(true);
}

Properties Service(const char* pState)
{
    return {{"Type", Text("wifi")},
            {"State", Text(pState)},
            {"Name", Text("Net")},
            {"Security", Texts({"psk", "wps"})},
            {"Strength", Data::MakeUInt32(60).SetVariant(true)},
            {"Nameservers", Texts({"192.0.2.1"})},
            {"Ethernet", Section({{"Interface", Text("wlan0")}, {"Address", Text("02:00")}})},
            {"IPv4", Section({{"Method", Text("dhcp")}, {"Address", Text("192.0.2.7")}})}};
}

Properties Technology(bool bPowered)
{
    return {{"Name", Text("WiFi")},
            {"Type", Text("wifi")},
            {"Powered", Data::MakeBool(bPowered, true)},
            {"Connected", Data::MakeBool(false, true)}};
}

Data Field(const char* pType, const char* pRequirement)
{
    return Section({{"Type", Text(pType)},
                    {"Requirement", Text(pRequirement)},
                    {"Alternates", Texts({"WPS"})},
                    {"Value", Text("former")}});
}

Message NewMessage()
{
    return Message("net.example.Client", "/", "net.example.Peer", "Tell");
}

// By hand: the layer reads structures and never writes one.
Message ListMessage(const std::vector<Entry>& vecEntries)
{
    Message message = NewMessage();
    DBusMessageIter arguments;
    DBusMessageIter list;
    dbus_message_iter_init_append(message.Get(), &arguments);
    dbus_message_iter_open_container(&arguments, DBUS_TYPE_ARRAY, "(oa{sv})", &list);
    for (const auto& [sPath, properties] : vecEntries) {
        DBusMessageIter entry;
        dbus_message_iter_open_container(&list, DBUS_TYPE_STRUCT, nullptr, &entry);
        Data::MakeObjectPath(sPath).AddToMessage(&entry, false);
        Data::MakeDictionary(Data::Variant, properties).AddToMessage(&entry, false);
        dbus_message_iter_close_container(&list, &entry);
    }
    dbus_message_iter_close_container(&arguments, &list);
    return message;
}

Message PropertyMessage(const char* pName, const Data& value)
{
    return NewMessage().Add(Data::MakeString(pName)).Add(value);
}

Message RequestMessage(Properties fields)
{
    return NewMessage()
        .Add(Data::MakeObjectPath("/service"))
        .Add(Data::MakeDictionary(Data::Variant, std::move(fields)));
}

void Save(const std::string& sFile, const std::string& sBytes)
{
    std::ofstream(sFile, std::ios::binary) << sBytes;
}

void SaveLists(const std::string& sDirectory)
{
    const Message services =
        ListMessage({{"/a", Service("ready")}, {"/b", Service("idle")}, {"/a", {}}, {"/c", {}}});
    Save(sDirectory + "/services", MakeInput(0, 0, services));
    Save(sDirectory + "/technologies",
         MakeInput(0, 0, ListMessage({{"/t", Technology(true)}, {"/u", {}}})));
    Save(sDirectory + "/empty", MakeInput(0, 0, ListMessage({})));
    Properties bad = Service("idle");
    bad["Nameservers"] = Data::MakeArray(Data::UInt32, {Data::MakeUInt32(1)}).SetVariant(true);
    Save(sDirectory + "/bad", MakeInput(0, 0, ListMessage({{"/a", bad}, {"/b", Service("idle")}})));
}

// The kinds are those of FuzzSignals.cpp, the signatures the positions there.
void SaveSignals(const std::string& sDirectory)
{
    const std::string sServices =
        MakeInput(3, 0, ListMessage({{"/a", Service("ready")}, {"/b", Service("idle")}}));
    const std::string sStrength =
        MakeInput(1, 0, PropertyMessage("Strength", Data::MakeUInt32(7).SetVariant(true)));
    const std::string sUnchanged =
        MakeInput(0, 1, ListMessage({{"/b", {}}, {"/a", Service("online")}, {"/c", {}}}));
    const std::string sState = MakeInput(1, 0, PropertyMessage("State", Text("idle")));
    const std::string sTechnologies = MakeInput(4, 0, ListMessage({{"/t", Technology(true)}}));
    Save(sDirectory + "/services", sServices + sStrength + sUnchanged + sStrength);
    Save(sDirectory + "/state", sServices + sState + sTechnologies);
    Save(sDirectory + "/gone", sServices + MakeInput(3, 0, ListMessage({})) + sStrength);
}

void SaveRequests(const std::string& sDirectory)
{
    const Data passphrase = Field("psk", "mandatory");
    Save(sDirectory + "/passphrase",
         MakeInput(
             0, 0,
             RequestMessage({{"Passphrase", passphrase}, {"WPS", Field("wpspin", "alternate")}})));
    Save(sDirectory + "/retry",
         MakeInput(0, 0,
                   RequestMessage({{"Passphrase", passphrase},
                                   {"PreviousPassphrase", Field("psk", "informational")}})));
    Save(sDirectory + "/bad", MakeInput(0, 0, RequestMessage({{"Passphrase", Section({})}})));
}

} // namespace

int main(int nArguments, char** pArguments)
{
    if (nArguments != 4) {
        std::cerr << "make_client_seeds <directory for lists> <for signals> <for agent calls>\n";
        return EXIT_FAILURE;
    }
    SaveLists(pArguments[1]);
    SaveSignals(pArguments[2]);
    SaveRequests(pArguments[3]);
}
