#pragma once

#include "tests/connman/model/Look.h"

#include "host/Qel.h"

#include <cstdint>
#include <iosfwd>
#include <rapidcheck.h>
#include <vector>

namespace Tovra::ConnManModel
{

/** What happens in the daemon, and what it sends of it. */
enum class Happening : unsigned {
    AnswerServices, ///< the oldest open call is answered
    AnswerTechnologies,
    Come,           ///< a service comes, or is announced anew: "ServicesChanged"
    Go,             ///< a service goes: "ServicesChanged"
    Reorder,        ///< two services change places: "ServicesChanged"
    Change,         ///< one property of a service changes: "PropertyChanged"
    ChangeSilently, ///< the same without a signal
    TechnologyComes,
    TechnologyGoes,
    TechnologyChanges,
    Property,              ///< "PropertyChanged" in an odd form, from any service's path
    MisreportServices,     ///< "ServicesChanged" in an odd form
    MisanswerServices,     ///< an answer in an odd form
    MisanswerTechnologies, ///< the same
    RefuseServices,        ///< an error, with arguments of any form
    RefuseTechnologies,    ///< the same
    Count,
};

/** An entry that does not belong into a list, or that is there already. */
struct Oddity {
    unsigned nPlace = 0;
    unsigned nShape = 0;
    unsigned nPath = 0;
    Look look;
};

/** Every number stands for something, whatever it is: so a smaller event is an event too. */
struct Event {
    Happening happening = Happening::AnswerServices;
    unsigned nPath = 0;
    unsigned nPlace = 0;
    unsigned nOther = 0; ///< a second place, a field, a shape
    Look look;
    std::vector<Oddity> vecOddities; ///< in the list that is sent, if one is
};

struct History {
    std::vector<unsigned> vecMasks; ///< of the callbacks, in the order of registration
    unsigned nThreshold = 0;        ///< the lowest level that is logged
    std::vector<Event> vecEvents;

    QelLogLevel GetThreshold() const { return static_cast<QelLogLevel>(nThreshold); }
};

History MakeHistory(std::uint64_t nSeed, std::size_t nEvents);

/** Histories of so many events; they shrink to few and plain ones. */
rc::Gen<History> Histories(std::size_t nEvents);

/** With what the daemon sends at each event. */
std::ostream& operator<<(std::ostream& stream, const History& history);

} // namespace Tovra::ConnManModel
