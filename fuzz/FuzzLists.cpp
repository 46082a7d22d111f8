// ConnMan's two lists: from the bytes of a message to records, and what a list means.

#include "Common/Lists.h"
#include "fuzz/FuzzSupport.h"
#include "fuzz/FuzzedMessage.h"
#include "tests/support/DataText.h"

#include <algorithm>
#include <set>
#include <typeinfo>

using Tovra::ConnMan;
using Tovra::DBus::Data;
using Tovra::Fuzz::Require;
namespace Lists = Tovra::Lists;

namespace
{

constexpr auto signatures = {"a(oa{sv})", "av",     "a(oa{ss})", "a(sa{sv})", "a(oas)",
                             "a{oa{sv}}", "a(o)",   "aas",       "a(ov)",     "as",
                             "s",         "a(oau)", "a(oaa{sv})"};

void RequireIndex(std::vector<ConnMan::NetworkService>& vecServices)
{
    const Lists::ServiceIndex mapIndex = Lists::MakeIndex(vecServices);
    std::set<std::string> setPaths;
    for (const ConnMan::NetworkService& service : vecServices)
        setPaths.insert(service.sPath);
    Require(mapIndex.size() == setPaths.size(), "every path is in the index once");
    for (const auto& [sPath, pService] : mapIndex) {
        const auto isIt = [&, &sPath = sPath](const auto& service) {
            return service.sPath == sPath;
        };
        const auto last = std::find_if(vecServices.rbegin(), vecServices.rend(), isIt);
        Require(last != vecServices.rend() && &*last == pService, "the last one of a path stands");
    }
}

void RequireConnected(const std::vector<ConnMan::NetworkService>& vecServices)
{
    const ConnMan::NetworkService* pFound = Lists::FindConnected(vecServices);
    const auto first = std::find_if(vecServices.begin(), vecServices.end(), Lists::IsConnected);
    Require(pFound == (first == vecServices.end() ? nullptr : &*first), "the first one connected");
    Require(!Lists::IsConnectionChanged(pFound, pFound), "nothing differs from itself");
    if (pFound)
        Require(Lists::IsConnectionChanged(pFound, nullptr), "going is a change");
}

void ReadNetworks(const Data& data, std::size_t nEntries)
{
    unsigned nIncompatible = 0;
    const auto fnIncompatible = [&] { ++nIncompatible; };
    auto vecServices = Lists::ReadNetworks(data, {}, fnIncompatible);
    Require(vecServices.size() + nIncompatible <= nEntries, "no more than one of each entry");
    RequireIndex(vecServices);
    RequireConnected(vecServices);

    // Once more, beside what is known now.
    const unsigned nBefore = nIncompatible;
    nIncompatible = 0;
    auto vecAgain = Lists::ReadNetworks(data, Lists::MakeIndex(vecServices), fnIncompatible);
    Require(nIncompatible == nBefore, "what is known does not make an entry bad");
    Require(vecAgain.size() >= vecServices.size(), "what is known does not make an entry go");
    RequireIndex(vecAgain);
}

void ReadTechnologies(const Data& data, std::size_t nEntries)
{
    unsigned nIncompatible = 0;
    const auto vecTechnologies = Lists::ReadTechnologies(data, [&] { ++nIncompatible; });
    Require(vecTechnologies.size() + nIncompatible == nEntries, "a record or a report for each");
}

void RequireBadCast(const Data& data)
{
    try {
        Lists::ReadNetworks(data, {}, [] {});
    } catch (const std::bad_cast&) {
        return;
    }
    Require(false, "what is no list is refused");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    Tovra::Fuzz::SilenceWarnings();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pBytes, std::size_t nSize)
{
    Tovra::Fuzz::MessageSequence messages(pBytes, nSize);
    while (messages.Next()) {
        const auto message = messages.Make(signatures);
        if (!message)
            return 0;
        const Data data = message.Contents();
        if (data.GetType() != Data::Array) {
            RequireBadCast(data);
            continue;
        }
        const std::string sBefore = Tovra::TestSupport::Describe(data);
        const std::size_t nEntries = data.As<std::vector<Data>>().size();
        ReadNetworks(data, nEntries);
        ReadTechnologies(data, nEntries);
        Require(Tovra::TestSupport::Describe(data) == sBefore, "reading changes nothing");
    }
    return 0;
}
