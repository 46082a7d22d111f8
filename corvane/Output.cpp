#include "corvane/Output.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <sstream>

namespace Tovra::Corvane::Output
{

namespace
{

using nlohmann::json;
using Row = std::vector<std::string>;

std::size_t GetWidth(const std::string& sText)
{
    return static_cast<std::size_t>(std::count_if(
        sText.begin(), sText.end(), [](unsigned char c) { return (c & 0xC0) != 0x80; }));
}

std::string Pad(const std::string& sText, std::size_t nWidth)
{
    return sText + std::string(nWidth - std::min(nWidth, GetWidth(sText)), ' ');
}

std::string MakeRows(const std::vector<Row>& vecRows, const std::vector<std::string>& vecColours)
{
    std::vector<std::size_t> vecWidths(vecRows.front().size(), 0);
    for (const Row& row : vecRows) {
        for (std::size_t nColumn = 0; nColumn < row.size(); ++nColumn)
            vecWidths[nColumn] = std::max(vecWidths[nColumn], GetWidth(row[nColumn]));
    }
    std::string sTable;
    for (std::size_t nRow = 0; nRow < vecRows.size(); ++nRow) {
        std::string sLine;
        for (std::size_t nColumn = 0; nColumn < vecRows[nRow].size(); ++nColumn)
            sLine += Pad(vecRows[nRow][nColumn], vecWidths[nColumn] + 2);
        sLine.erase(sLine.find_last_not_of(' ') + 1);
        const std::string& sColour = vecColours[nRow];
        sTable += sColour.empty() ? sLine + "\n" : sColour + sLine + "\x1b[0m\n";
    }
    return sTable;
}

bool IsStrengthKnown(const DeviceConfig::NetworkService& service)
{
    return service.nStrength >= 0 && service.nStrength <= 100;
}

std::string MakeBars(const DeviceConfig::NetworkService& service)
{
    if (!IsStrengthKnown(service))
        return "";
    const int nBars = (service.nStrength + 24) / 25;
    std::string sBars;
    for (int nBar = 0; nBar < 4; ++nBar)
        sBars += nBar < nBars ? "▮" : "▯";
    return fmt::format("{} {:3}", sBars, service.nStrength);
}

const char* GetState(const DeviceConfig::NetworkService& service)
{
    if (service.bConnected)
        return "connected";
    return service.bFailed ? "failed" : "";
}

std::string GetColour(const DeviceConfig::NetworkService& service)
{
    if (service.bConnected)
        return "\x1b[32m";
    return service.bFailed ? "\x1b[31m" : "";
}

std::string MakeYesNo(bool bValue)
{
    return bValue ? "yes" : "no";
}

std::string MakeAddress(const DeviceConfig::NetworkService& service)
{
    if (service.sIPv4Address.empty())
        return "";
    return service.sIPv4Address + (service.bDhcp ? "" : " (static)");
}

std::string Join(const std::vector<std::string>& vecTexts)
{
    std::string sJoined;
    for (const std::string& sText : vecTexts)
        sJoined += (sJoined.empty() ? "" : ", ") + sText;
    return sJoined;
}

} // namespace

std::string MakePrintable(const std::string& sText)
{
    std::string sPrintable;
    for (std::size_t nByte = 0; nByte < sText.size(); ++nByte) {
        const auto nCode = static_cast<unsigned char>(sText[nByte]);
        const auto nNext = static_cast<unsigned char>(sText[nByte + 1]); // of the last, a zero
        const bool bTwoBytes = nCode == 0xC2 && nNext >= 0x80 && nNext < 0xA0;
        sPrintable += bTwoBytes || nCode < 0x20 || nCode == 0x7f ? '?' : sText[nByte];
        nByte += bTwoBytes ? 1 : 0;
    }
    return sPrintable;
}

std::string ToLine(const json& value)
{
    return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

json ToJson(const DeviceConfig::NetworkTechnology& technology, const std::string& sType)
{
    return {{"type", sType},
            {"name", technology.sName},
            {"powered", technology.bPowered},
            {"connected", technology.bConnected}};
}

json ToJson(const DeviceConfig::NetworkService& service, const std::string& sKey)
{
    std::istringstream words(service.sSecurity);
    const std::vector<std::string> vecSecurity{std::istream_iterator<std::string>(words), {}};
    return {{"key", sKey},
            {"name", service.sName},
            {"type", service.sType},
            {"interface", service.sInterface},
            {"mac_address", service.sMacAddress},
            {"connected", service.bConnected},
            {"failed", service.bFailed},
            {"security", vecSecurity},
            {"strength", IsStrengthKnown(service) ? json(service.nStrength) : json(nullptr)},
            {"dhcp", service.bDhcp},
            {"address", service.sIPv4Address},
            {"netmask", service.sIPv4Netmask},
            {"gateway", service.sIPv4Gateway},
            {"nameservers", service.vecNameservers}};
}

json ToJson(const Technologies& mapTechnologies)
{
    json list = json::array();
    for (const auto& [sType, technology] : mapTechnologies)
        list.push_back(ToJson(technology, sType));
    return list;
}

json ToJson(const Services& mapServices)
{
    json list = json::array();
    for (const auto& [sKey, service] : mapServices)
        list.push_back(ToJson(service, sKey));
    return list;
}

std::string MakeTable(const Technologies& mapTechnologies, bool bColour)
{
    std::vector<Row> vecRows = {{"TYPE", "NAME", "POWERED", "CONNECTED"}};
    std::vector<std::string> vecColours = {bColour ? "\x1b[1m" : ""};
    for (const auto& [sType, technology] : mapTechnologies) {
        vecRows.push_back({MakePrintable(sType), MakePrintable(technology.sName),
                           MakeYesNo(technology.bPowered), MakeYesNo(technology.bConnected)});
        vecColours.emplace_back(bColour && technology.bConnected ? "\x1b[32m" : "");
    }
    return MakeRows(vecRows, vecColours);
}

std::string MakeTable(const Services& mapServices, bool bColour)
{
    std::vector<Row> vecRows = {{"NAME", "TYPE", "SIGNAL", "SECURITY", "STATE", "ADDRESS"}};
    std::vector<std::string> vecColours = {bColour ? "\x1b[1m" : ""};
    for (const auto& [sKey, service] : mapServices) {
        vecRows.push_back({MakePrintable(service.sName), MakePrintable(service.sType),
                           MakeBars(service), MakePrintable(service.sSecurity), GetState(service),
                           MakePrintable(MakeAddress(service))});
        vecColours.push_back(bColour ? GetColour(service) : "");
    }
    return MakeRows(vecRows, vecColours);
}

std::string MakeDetails(const DeviceConfig::NetworkService& service, const std::string& sKey)
{
    const std::string sStrength =
        IsStrengthKnown(service) ? fmt::format("{} %", service.nStrength) : "unknown";
    const std::array<std::pair<const char*, std::string>, 13> lines = {{
        {"Name", service.sName},
        {"Key", sKey},
        {"Type", service.sType},
        {"Interface", service.sInterface},
        {"MAC address", service.sMacAddress},
        {"Connected", MakeYesNo(service.bConnected)},
        {"Failed", MakeYesNo(service.bFailed)},
        {"Security", service.sSecurity},
        {"Signal", sStrength},
        {"Method", service.bDhcp ? "DHCP" : "static"},
        {"Address", service.sIPv4Address +
                        (service.sIPv4Netmask.empty() ? "" : " netmask " + service.sIPv4Netmask)},
        {"Gateway", service.sIPv4Gateway},
        {"Name servers", Join(service.vecNameservers)},
    }};
    std::string sText;
    for (const auto& [pLabel, sValue] : lines)
        sText += fmt::format("{:<13} {}\n", pLabel, sValue.empty() ? "-" : MakePrintable(sValue));
    return sText;
}

} // namespace Tovra::Corvane::Output
