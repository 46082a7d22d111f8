#include "corvane/Commands.h"
#include "corvane/Output.h"
#include "corvane/Status.h"
#include "corvane/Waiting.h"

#include <ctime>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <unistd.h>

namespace Tovra::Corvane::Commands
{

using nlohmann::json;

namespace
{

// Changes of strength alone are not told.
constexpr std::chrono::seconds rereading{2};

void Tell(bool bJson, const json& line, const std::string& sText)
{
    if (bJson)
        fmt::print("{}\n", Output::ToLine(line));
    else
        fmt::print("{:%H:%M:%S}  {}\n", fmt::localtime(std::time(nullptr)), sText);
    if (std::fflush(stdout) != 0)
        throw Failure(Status::Error, "nobody reads the output any more");
}

/** Names the values that differ, as "key: old -> new". */
std::string Differences(const json& before, const json& after)
{
    std::string sText;
    for (const auto& [sName, value] : after.items()) {
        if (before.at(sName) != value)
            sText += fmt::format("{}{}: {} -> {}", sText.empty() ? "" : ", ", sName,
                                 Output::MakePrintable(Output::ToLine(before.at(sName))),
                                 Output::MakePrintable(Output::ToLine(value)));
    }
    return sText;
}

std::string Summarize(const DeviceConfig::NetworkService& service)
{
    std::string sText = service.sType;
    for (const std::string& sPart :
         {service.sSecurity, std::string(service.bConnected ? "connected" : ""),
          service.sIPv4Address})
        sText += (sPart.empty() ? "" : ", ") + sPart;
    return Output::MakePrintable(sText);
}

std::string Summarize(const DeviceConfig::NetworkTechnology& technology)
{
    return technology.bPowered ? "on" : "off";
}

template <class Map> const char* GetKind();
template <> const char* GetKind<Services>()
{
    return "network";
}
template <> const char* GetKind<Technologies>()
{
    return "technology";
}

template <class Map> void Compare(bool bJson, const Map& mapBefore, const Map& mapAfter)
{
    const std::string sKind = GetKind<Map>();
    for (const auto& [sKey, value] : mapAfter) {
        const json after = Output::ToJson(value, sKey);
        const auto found = mapBefore.find(sKey);
        const std::string sName = Output::MakePrintable(value.sName);
        if (found == mapBefore.end()) {
            Tell(bJson, {{"event", sKind + "-added"}, {sKind, after}},
                 fmt::format("+ {} '{}' ({})", sKind, sName, Summarize(value)));
            continue;
        }
        const json before = Output::ToJson(found->second, sKey);
        if (before != after)
            Tell(bJson, {{"event", sKind + "-changed"}, {sKind, after}, {"before", before}},
                 fmt::format("  {} '{}' {}", sKind, sName, Differences(before, after)));
    }
    for (const auto& [sKey, value] : mapBefore) {
        if (mapAfter.count(sKey) == 0)
            Tell(bJson, {{"event", sKind + "-removed"}, {sKind, Output::ToJson(value, sKey)}},
                 fmt::format("- {} '{}'", sKind, Output::MakePrintable(value.sName)));
    }
}

std::string Describe(unsigned nFlags)
{
    // The bits of the word, from the lowest.
    std::string sText;
    for (const char* pPart : {"state", "technologies", "networks", "strength"}) {
        if ((nFlags & 1u) != 0)
            sText += (sText.empty() ? "" : ", ") + std::string(pPart);
        nFlags >>= 1u;
    }
    return sText;
}

void TellOf(bool bJson, const Event& event)
{
    switch (event.kind) {
    case Event::Kind::Ipc:
        Tell(bJson, {{"event", "ipc"}, {"name", event.sName}},
             fmt::format("! event {}", event.sName));
        break;
    case Event::Kind::AddressesChanged:
        Tell(bJson, {{"event", "refresh"}}, "! the device's addresses are to be refreshed");
        break;
    case Event::Kind::NetworksChanged:
        Tell(bJson, {{"event", "networks-changed"}, {"flags", event.nFlags}},
             fmt::format("! networks changed ({}: {})", event.nFlags, Describe(event.nFlags)));
        break;
    }
}

} // namespace

Status Watch(Host& host, const Request& request)
{
    if (!request.bJson) {
        fmt::print("Watching; Ctrl-C ends.\n");
        std::fflush(stdout);
    }
    host.SetReadOnChange(true);
    Picture before;
    Progress progress(request.bJson);
    const auto start = Clock::now();
    for (;;) {
        const Picture after = host.Read();
        if (after.mapTechnologies.empty() && Clock::now() - start > rereading)
            progress.Show("The network daemon has told of nothing yet");
        Compare(request.bJson, before.mapTechnologies, after.mapTechnologies);
        Compare(request.bJson, before.mapServices, after.mapServices);
        before = after;
        Event event = {Event::Kind::Ipc, 0, {}};
        switch (host.WaitForEvent(Clock::now() + rereading, &event)) {
        case Host::Wake::Interrupt:
            if (isatty(STDOUT_FILENO))
                std::fputc('\n', stdout); // after the ^C that the terminal shows
            host.SetReadOnChange(false);
            return Status::Done;
        case Host::Wake::Event:
            TellOf(request.bJson, event);
            break;
        case Host::Wake::Deadline:
            break;
        }
    }
}

} // namespace Tovra::Corvane::Commands
