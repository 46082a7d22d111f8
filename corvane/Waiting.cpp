#include "corvane/Waiting.h"

#include "corvane/Output.h"
#include "corvane/Status.h"

#include <algorithm>
#include <fmt/format.h>

namespace Tovra::Corvane
{

namespace
{

constexpr double nFirstListsSeconds = 5;

// The plug-in may have told of a change before anybody listened, and does not tell of all changes.
constexpr std::chrono::milliseconds rereading{200};

// So long it takes whenever the plug-in has just been loaded.
constexpr std::chrono::milliseconds unremarkable{1500};

bool ChangesSomething(const Request& request)
{
    return request.command != Request::Command::ListTechnologies &&
           request.command != Request::Command::ListNetworks &&
           request.command != Request::Command::Show;
}

template <class Map, class Describe>
std::string List(const Map& mapEntries, const Describe& describe)
{
    std::string sList;
    for (const auto& entry : mapEntries)
        sList += (sList.empty() ? "" : ", ") + Output::MakePrintable(describe(entry));
    return sList.empty() ? "nothing" : sList;
}

} // namespace

Clock::time_point GetDeadline(const Request& request, double nDefaultSeconds)
{
    const std::chrono::duration<double> wait(request.nWaitSeconds.value_or(nDefaultSeconds));
    return Clock::now() + std::chrono::duration_cast<Clock::duration>(wait);
}

Outcome ReadUntil(Host& host, Clock::time_point until,
                  const std::function<bool(const Picture&)>& fnIsReached)
{
    for (;;) {
        if (fnIsReached(host.Read()))
            return Outcome::Reached;
        const auto next = std::min(until, Clock::now() + rereading);
        if (host.WaitForEvent(next) == Host::Wake::Interrupt)
            return Outcome::Interrupt;
        if (Clock::now() >= until)
            return fnIsReached(host.Read()) ? Outcome::Reached : Outcome::Deadline;
    }
}

Picture ReadFirst(Host& host, const Request& request)
{
    // A short time to wait is for the result of a change, not for what goes before it.
    const double nAsked = request.nWaitSeconds.value_or(nFirstListsSeconds);
    const double nSeconds =
        ChangesSomething(request) ? std::max(nAsked, nFirstListsSeconds) : nAsked;
    const auto until = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                          std::chrono::duration<double>(nSeconds));
    Progress progress(request.bJson);
    Picture first;
    const auto start = Clock::now();
    const auto fnHasTold = [&](const Picture& picture) {
        first = picture;
        if (picture.mapTechnologies.empty() && Clock::now() - start > unremarkable)
            progress.Show("Waiting for the network daemon's lists");
        return !picture.mapTechnologies.empty();
    };
    switch (ReadUntil(host, until, fnHasTold)) {
    case Outcome::Reached:
        return first;
    case Outcome::Interrupt:
        throw Failure(Status::Interrupted, "interrupted");
    case Outcome::Deadline:
        break;
    }
    throw Failure(Status::NoNetworks,
                  fmt::format("the network daemon told of no technology within {} s; is there the "
                              "system bus, does the daemon run, and may this user talk to it?",
                              nSeconds));
}

Services::const_iterator FindNetwork(const Picture& picture, const std::string& sNetwork)
{
    const Services& mapServices = picture.mapServices;
    auto found = std::find_if(mapServices.begin(), mapServices.end(),
                              [&](const auto& entry) { return entry.second.sName == sNetwork; });
    if (found == mapServices.end())
        found = mapServices.find(sNetwork);
    if (found == mapServices.end())
        throw Failure(Status::Unknown, fmt::format("there is no network '{}'; there is {}",
                                                   Output::MakePrintable(sNetwork),
                                                   List(mapServices, [](const auto& entry) {
                                                       return "'" + entry.second.sName + "'";
                                                   })));
    return found;
}

Technologies::const_iterator FindTechnology(const Picture& picture, const std::string& sTechnology)
{
    const Technologies& mapTechnologies = picture.mapTechnologies;
    const auto found =
        std::find_if(mapTechnologies.begin(), mapTechnologies.end(), [&](const auto& entry) {
            return entry.first == sTechnology || entry.second.sName == sTechnology;
        });
    if (found == mapTechnologies.end())
        throw Failure(Status::Unknown, fmt::format("there is no technology '{}'; there is {}",
                                                   Output::MakePrintable(sTechnology),
                                                   List(mapTechnologies, [](const auto& entry) {
                                                       return entry.first;
                                                   })));
    return found;
}

} // namespace Tovra::Corvane
