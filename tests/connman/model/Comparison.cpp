#include "tests/connman/model/Comparison.h"

#include "tests/connman/model/Daemon.h"
#include "tests/connman/model/Model.h"

#include <tuple>

namespace Tovra::ConnManModel
{

namespace
{

using TestSupport::WireValue;

// The model's records and the client's are other types with the same fields.
template <class Record> auto ServiceFields(const Record& record)
{
    return std::tie(record.sPath, record.sInterface, record.sMacAddress, record.sName, record.sType,
                    record.sState, record.sIPv4Address, record.sIPv4Netmask, record.sIPv4Gateway,
                    record.sIPv4Method, record.vecNameservers, record.vecSecurity,
                    record.nStrength);
}

template <class Record> auto TechnologyFields(const Record& record)
{
    return std::tie(record.sPath, record.sName, record.sType, record.bPowered, record.bConnected);
}

template <class Left, class Right, class Fields>
bool AreAlike(const Left& left, const Right& right, const Fields& fields)
{
    return std::equal(
        left.begin(), left.end(), right.begin(), right.end(),
        [&](const auto& one, const auto& other) { return fields(one) == fields(other); });
}

std::string Show(const std::string& sText)
{
    return "'" + sText + "'";
}

std::string Show(std::uint32_t nNumber)
{
    return std::to_string(nNumber);
}

std::string Show(const std::vector<std::string>& vecTexts)
{
    std::string sShown;
    for (const std::string& sText : vecTexts)
        sShown += Show(sText);
    return "[" + sShown + "]";
}

template <class... Fields> std::string ShowRecord(const std::tuple<Fields...>& fields)
{
    const auto join = [](const auto&... field) { return (("  " + Show(field)) + ...); };
    return "\n  " + std::apply(join, fields);
}

/** The client's or the model's lists and what it did. */
template <class Lists>
std::string ShowAll(const Lists& lists, const std::vector<std::string>& vecJournal)
{
    std::string sShown = "\n services";
    for (const auto& record : lists.GetServices())
        sShown += ShowRecord(ServiceFields(record));
    sShown += "\n technologies";
    for (const auto& record : lists.GetTechnologies())
        sShown += ShowRecord(TechnologyFields(record));
    sShown += "\n done";
    for (const std::string& sLine : vecJournal)
        sShown += "\n    " + sLine;
    return sShown;
}

bool HasRequest(const Model& model, Traffic::Way way)
{
    return way == Traffic::Way::ServicesAnswer       ? !model.GetOpenServices().empty()
           : way == Traffic::Way::TechnologiesAnswer ? model.CountOpenTechnologies() > 0
                                                     : true;
}

/** How the two differ now, if they do. */
std::optional<std::string> FindDifference(Subject& subject, Model& model)
{
    const auto services = [](const auto& record) { return ServiceFields(record); };
    const auto technologies = [](const auto& record) { return TechnologyFields(record); };
    const std::vector<std::string> vecExpected = model.TakeJournal();
    const std::vector<std::string> vecDone = subject.TakeJournal();
    if (vecExpected != vecDone || !AreAlike(model.GetServices(), subject.GetServices(), services) ||
        !AreAlike(model.GetTechnologies(), subject.GetTechnologies(), technologies))
        return "\nmodel:" + ShowAll(model, vecExpected) + "\nclient:" + ShowAll(subject, vecDone);
    if (!subject.AwaitsAnswers(model.GetOpenServices().size(), model.CountOpenTechnologies()))
        return "\nthe client has not asked for lists as often as the model";
    return std::nullopt;
}

} // namespace

std::optional<std::string> Compare(Subject& subject, const History& history)
{
    subject.Prepare(history);
    Model model(history.vecMasks, history.GetThreshold());
    Daemon daemon;
    for (std::size_t nEvent = 0; nEvent < history.vecEvents.size(); ++nEvent) {
        const Traffic traffic = daemon.Play(history.vecEvents[nEvent]);
        if (!HasRequest(model, traffic.way))
            continue;
        const unsigned nFlags = model.GetOpenServices().empty() ? 0 : model.GetOpenServices()[0];
        model.Receive(traffic);
        subject.Receive(traffic, nFlags);
        if (const auto difference = FindDifference(subject, model))
            return "after event " + std::to_string(nEvent) + ", " + Describe(traffic) + *difference;
    }
    return std::nullopt;
}

} // namespace Tovra::ConnManModel
