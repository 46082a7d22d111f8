#pragma once

#include "corvane/Host.h"

#include <nlohmann/json.hpp>

/** What the commands print. Plain functions. */
namespace Tovra::Corvane::Output
{

nlohmann::json ToJson(const DeviceConfig::NetworkTechnology& technology, const std::string& sType);
nlohmann::json ToJson(const DeviceConfig::NetworkService& service, const std::string& sKey);
nlohmann::json ToJson(const Technologies& mapTechnologies);
nlohmann::json ToJson(const Services& mapServices);

std::string MakeTable(const Technologies& mapTechnologies, bool bColour);
std::string MakeTable(const Services& mapServices, bool bColour);

/** All that is known of one network, a line each. */
std::string MakeDetails(const DeviceConfig::NetworkService& service, const std::string& sKey);

/** As one line; what is not UTF-8 is replaced: it may come from the command line. */
std::string ToLine(const nlohmann::json& value);

/** The text with control characters replaced: names come from whoever is on the air. */
std::string MakePrintable(const std::string& sText);

} // namespace Tovra::Corvane::Output
