#include "tests/connman/model/Daemon.h"

#include "tests/connman/model/Shapes.h"

#include <algorithm>

namespace Tovra::ConnManModel
{

using namespace TestSupport;

namespace
{

using Way = Traffic::Way;

Traffic MakeAnswer(Way way, std::vector<WireValue> vecArguments, bool bError = false)
{
    return {way, std::move(vecArguments), {}, bError};
}

Traffic MakeSignal(const std::string& sPath, const char* pInterface, const char* pMember,
                   std::vector<WireValue> vecArguments)
{
    return {Way::Signal, std::move(vecArguments), {sPath, pInterface, pMember}, false};
}

Traffic MakeServicesChanged(std::vector<WireValue> vecArguments)
{
    return MakeSignal("/", pManager, "ServicesChanged", std::move(vecArguments));
}

std::ptrdiff_t PlaceIn(unsigned nPlace, std::size_t nSize)
{
    return static_cast<std::ptrdiff_t>(nPlace % nSize);
}

using Shape = WireValue (*)(unsigned nShape, const std::string& sPath, const Look& look);

void Spoil(std::vector<WireValue>& vecList, const Event& event, std::string (*fnPath)(unsigned),
           Shape fnShape)
{
    for (const Oddity& oddity : event.vecOddities)
        vecList.insert(vecList.begin() + PlaceIn(oddity.nPlace, vecList.size() + 1),
                       fnShape(oddity.nShape, fnPath(oddity.nPath), oddity.look));
}

} // namespace

Traffic Daemon::Play(const Event& event)
{
    switch (event.happening) {
    case Happening::Property:
        return PlayProperty(event);
    case Happening::TechnologyComes:
    case Happening::TechnologyGoes:
    case Happening::TechnologyChanges:
    case Happening::AnswerTechnologies:
    case Happening::MisanswerTechnologies:
    case Happening::RefuseTechnologies:
        return PlayTechnologies(event);
    default:
        return PlayServices(event);
    }
}

Traffic Daemon::PlayServices(const Event& event)
{
    switch (event.happening) {
    case Happening::Come:
    case Happening::Go:
    case Happening::Reorder:
        return AnnounceServices(event);
    case Happening::Change:
    case Happening::ChangeSilently:
        return ChangeService(event);
    case Happening::MisreportServices:
        return MakeServicesChanged(ListShape(event.nOther, ListServices(event)));
    case Happening::MisanswerServices:
        return MakeAnswer(Way::ServicesAnswer, ListShape(event.nOther, ListServices(event)));
    case Happening::RefuseServices:
        return MakeAnswer(Way::ServicesAnswer, ListShape(event.nOther, ListServices(event)), true);
    default:
        return MakeAnswer(Way::ServicesAnswer, {MakeList(ListServices(event))});
    }
}

/** As ConnMan has it: all services in order, the new ones in full, the others without contents. */
Traffic Daemon::AnnounceServices(const Event& event)
{
    if (event.happening == Happening::Come)
        Come(vecServices, ServicePath(event.nPath), event);
    else if (event.happening == Happening::Go)
        Go(vecServices, event);
    else if (!vecServices.empty())
        std::swap(vecServices[event.nPlace % vecServices.size()],
                  vecServices[event.nOther % vecServices.size()]);
    Values vecList;
    for (Item& item : vecServices)
        vecList.push_back(MakeEntry(item.sPath, std::exchange(item.bAnnounced, true)
                                                    ? WireProperties()
                                                    : ServiceProperties(item.sPath, item.look)));
    Spoil(vecList, event, ServicePath, ServiceShape);
    return MakeServicesChanged({MakeList(std::move(vecList)), WireArray("o")});
}

/** The property takes the look's value; the signal may come from a service that is gone. */
Traffic Daemon::ChangeService(const Event& event)
{
    const std::string sPath = ServicePath(event.nPath);
    const unsigned nField = event.nOther % static_cast<unsigned>(std::size(lookFields));
    const auto pField = lookFields[nField];
    for (Item& item : vecServices)
        if (item.sPath == sPath)
            item.look.*pField = event.look.*pField;
    if (event.happening == Happening::ChangeSilently)
        return {};
    const auto [sKey, value] = ServiceProperty(event.look, nField);
    return MakeSignal(sPath, pService, "PropertyChanged", {WireText(sKey), WireVariant(value)});
}

Traffic Daemon::PlayProperty(const Event& event)
{
    return MakeSignal(ServicePath(event.nPath), pService, "PropertyChanged",
                      PropertyShape(event.nOther));
}

Traffic Daemon::PlayTechnologies(const Event& event)
{
    const std::string sPath = TechnologyPath(event.nPath);
    switch (event.happening) {
    case Happening::TechnologyComes:
        Come(vecTechnologies, sPath, event);
        return MakeSignal(
            "/", pManager, "TechnologyAdded",
            {WirePath(sPath), WireDictionary(TechnologyProperties(sPath, event.look))});
    case Happening::TechnologyGoes:
        Go(vecTechnologies, event);
        return MakeSignal("/", pManager, "TechnologyRemoved", {WirePath(sPath)});
    case Happening::TechnologyChanges:
        for (Item& item : vecTechnologies)
            item.look = event.look;
        return MakeSignal(sPath, pTechnology, "PropertyChanged", PropertyShape(event.nOther));
    case Happening::AnswerTechnologies:
        return MakeAnswer(Way::TechnologiesAnswer, {MakeList(ListTechnologies(event))});
    default:
        return MakeAnswer(Way::TechnologiesAnswer, ListShape(event.nOther, ListTechnologies(event)),
                          event.happening == Happening::RefuseTechnologies);
    }
}

Daemon::Values Daemon::ListServices(const Event& event) const
{
    Values vecList;
    for (const Item& item : vecServices)
        vecList.push_back(MakeEntry(item.sPath, ServiceProperties(item.sPath, item.look)));
    Spoil(vecList, event, ServicePath, ServiceShape);
    return vecList;
}

Daemon::Values Daemon::ListTechnologies(const Event& event) const
{
    Values vecList;
    for (const Item& item : vecTechnologies)
        vecList.push_back(MakeEntry(item.sPath, TechnologyProperties(item.sPath, item.look)));
    Spoil(vecList, event, TechnologyPath, TechnologyShape);
    return vecList;
}

void Daemon::Come(Items& vecItems, const std::string& sPath, const Event& event)
{
    const auto isIt = [&](const Item& item) { return item.sPath == sPath; };
    vecItems.erase(std::remove_if(vecItems.begin(), vecItems.end(), isIt), vecItems.end());
    vecItems.insert(vecItems.begin() + PlaceIn(event.nPlace, vecItems.size() + 1),
                    {sPath, event.look});
}

void Daemon::Go(Items& vecItems, const Event& event)
{
    if (!vecItems.empty())
        vecItems.erase(vecItems.begin() + PlaceIn(event.nPlace, vecItems.size()));
}

} // namespace Tovra::ConnManModel
