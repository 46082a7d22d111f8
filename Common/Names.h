#pragma once

/** ConnMan's names on the bus, each once. */
namespace Tovra::Names
{

constexpr const char* pService = "net.connman";

constexpr const char* pManagerPath = "/";
constexpr const char* pAgentPath = "/tovra/corvane/connman/agent";

constexpr const char* pManager = "net.connman.Manager";
constexpr const char* pTechnology = "net.connman.Technology";
constexpr const char* pNetworkService = "net.connman.Service";
constexpr const char* pAgent = "net.connman.Agent";

} // namespace Tovra::Names
