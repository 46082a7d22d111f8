#include "tests/connman/model/History.h"

#include "tests/connman/model/Daemon.h"

#include <ostream>
#include <random>

namespace Tovra::ConnManModel
{

namespace
{

using Random = std::mt19937_64;

unsigned Below(Random& random, unsigned nEnd)
{
    return static_cast<unsigned>(random() % nEnd);
}

/** Small numbers more often than large ones: the tables begin with what is common. */
unsigned Choose(Random& random)
{
    return Below(random, 1 + Below(random, 12));
}

Look MakeLook(Random& random)
{
    Look look;
    for (const auto pField : lookFields)
        look.*pField = Choose(random);
    return look;
}

Happening MakeHappening(Random& random)
{
    // How many in a hundred, in the order of the enumeration.
    constexpr unsigned shares[] = {16, 8, 10, 5, 6, 12, 5, 3, 2, 4, 12, 3, 6, 4, 2, 2};
    static_assert(std::size(shares) == static_cast<unsigned>(Happening::Count));
    unsigned nLeft = Below(random, 100);
    unsigned nHappening = 0;
    for (; nLeft >= shares[nHappening]; ++nHappening)
        nLeft -= shares[nHappening];
    return static_cast<Happening>(nHappening);
}

std::vector<Oddity> MakeOddities(Random& random)
{
    std::vector<Oddity> vecOddities(Below(random, 3) == 0 ? 1 + Below(random, 3) : 0);
    for (Oddity& oddity : vecOddities)
        oddity = {Below(random, 8), Below(random, 256), Below(random, 7), MakeLook(random)};
    return vecOddities;
}

Event MakeEvent(Random& random)
{
    return {MakeHappening(random), Below(random, 7), Below(random, 8),
            Below(random, 256),    MakeLook(random), MakeOddities(random)};
}

/** All that are nearer to nothing by one step, the longest step first. */
void ShrinkNumber(unsigned nValue, const std::function<void(unsigned)>& fnSmaller)
{
    for (unsigned nStep = nValue; nStep > 0; nStep /= 2)
        fnSmaller(nValue - nStep);
}

void ShrinkLook(const Look& look, const std::function<void(const Look&)>& fnSmaller)
{
    for (const auto pField : lookFields)
        ShrinkNumber(look.*pField, [&](unsigned nSmaller) {
            Look smaller = look;
            smaller.*pField = nSmaller;
            fnSmaller(smaller);
        });
}

/** The same for any record with a look and numbers of its own. */
template <class Record>
void ShrinkRecord(const Record& record, std::initializer_list<unsigned Record::*> fields,
                  const std::function<void(const Record&)>& fnSmaller)
{
    Record smaller = record;
    for (const auto pField : fields) {
        ShrinkNumber(record.*pField, [&](unsigned nSmaller) {
            smaller.*pField = nSmaller;
            fnSmaller(smaller);
        });
        smaller = record;
    }
    ShrinkLook(record.look, [&](const Look& look) {
        smaller.look = look;
        fnSmaller(smaller);
    });
}

std::vector<Oddity> SmallerOddities(const Oddity& oddity)
{
    std::vector<Oddity> vecSmaller;
    ShrinkRecord<Oddity>(oddity, {&Oddity::nPlace, &Oddity::nShape, &Oddity::nPath},
                         [&](const Oddity& smaller) { vecSmaller.push_back(smaller); });
    return vecSmaller;
}

std::vector<Event> SmallerEvents(const Event& event)
{
    std::vector<Event> vecSmaller;
    const auto add = [&](const Event& smaller) { vecSmaller.push_back(smaller); };
    for (std::size_t n = 0; n < event.vecOddities.size(); ++n) {
        Event smaller = event;
        smaller.vecOddities.erase(smaller.vecOddities.begin() + static_cast<std::ptrdiff_t>(n));
        add(smaller);
        for (const Oddity& oddity : SmallerOddities(event.vecOddities[n])) {
            smaller = event;
            smaller.vecOddities[n] = oddity;
            add(smaller);
        }
    }
    ShrinkNumber(static_cast<unsigned>(event.happening), [&](unsigned nSmaller) {
        Event smaller = event;
        smaller.happening = static_cast<Happening>(nSmaller);
        add(smaller);
    });
    ShrinkRecord<Event>(event, {&Event::nPath, &Event::nPlace, &Event::nOther}, add);
    return vecSmaller;
}

template <class Value>
rc::Seq<History> With(const History& history, Value History::*pMember, rc::Seq<Value> values)
{
    return rc::seq::map(std::move(values), [=](Value&& value) {
        History changed = history;
        changed.*pMember = std::move(value);
        return changed;
    });
}

rc::Seq<History> SmallerHistories(const History& history)
{
    const auto smallerEvents = [](const Event& event) {
        return rc::seq::fromContainer(SmallerEvents(event));
    };
    return rc::seq::concat(
        With(history, &History::vecEvents, rc::shrink::removeChunks(history.vecEvents)),
        With(history, &History::vecMasks, rc::shrink::removeChunks(history.vecMasks)),
        With(history, &History::nThreshold, rc::shrink::integral(history.nThreshold)),
        With(history, &History::vecEvents,
             rc::shrink::eachElement(history.vecEvents, smallerEvents)));
}

} // namespace

History MakeHistory(std::uint64_t nSeed, std::size_t nEvents)
{
    Random random(nSeed);
    History history;
    for (unsigned nLeft = 1 + Below(random, 4); nLeft > 0; --nLeft)
        history.vecMasks.push_back(Below(random, 3) == 0 ? 0xFFFFFFFF : Below(random, 16));
    // Mostly everything, now and then less, and at 4 nothing at all.
    history.nThreshold = Below(random, 4) == 0 ? Below(random, 5) : 0;
    for (std::size_t nEvent = 0; nEvent < nEvents; ++nEvent)
        history.vecEvents.push_back(MakeEvent(random));
    return history;
}

rc::Gen<History> Histories(std::size_t nEvents)
{
    return [=](const rc::Random& random, int) {
        rc::Random source(random);
        return rc::shrinkable::shrinkRecur(MakeHistory(source.next(), nEvents), &SmallerHistories);
    };
}

std::ostream& operator<<(std::ostream& stream, const History& history)
{
    stream << "levels from " << history.nThreshold << ", masks";
    for (const unsigned nMask : history.vecMasks)
        stream << " " << nMask;
    Daemon daemon;
    for (std::size_t nEvent = 0; nEvent < history.vecEvents.size(); ++nEvent)
        stream << "\n" << nEvent << ". " << Describe(daemon.Play(history.vecEvents[nEvent]));
    return stream;
}

} // namespace Tovra::ConnManModel
