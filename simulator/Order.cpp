#include "simulator/Order.h"

#include <algorithm>
#include <tuple>

namespace Tovra::Simulator
{

namespace
{

int GetStateRank(const Service& service)
{
    if (service.sState == "online")
        return 0;
    if (service.sState == "ready")
        return 1;
    return service.IsConnecting() ? 2 : 3;
}

int GetTypeRank(const std::string& sType)
{
    static const std::vector<std::string> vecTypes = {"ethernet", "wifi", "cellular", "bluetooth"};
    return static_cast<int>(std::find(vecTypes.begin(), vecTypes.end(), sType) - vecTypes.begin());
}

auto MakeKey(const Service& service)
{
    const Network& network = service.network;
    return std::make_tuple(GetStateRank(service), service.bFavorite ? 0 : 1,
                           GetTypeRank(network.sType), -static_cast<int>(network.nStrength),
                           network.sName.value_or(""));
}

} // namespace

bool ComesBefore(const Service& first, const Service& second)
{
    return MakeKey(first) < MakeKey(second);
}

bool Sort(std::vector<std::shared_ptr<Service>>& vecServices)
{
    const auto comesBefore = [](const auto& pFirst, const auto& pSecond) {
        return ComesBefore(*pFirst, *pSecond);
    };
    if (std::is_sorted(vecServices.begin(), vecServices.end(), comesBefore))
        return false;
    std::stable_sort(vecServices.begin(), vecServices.end(), comesBefore);
    return true;
}

} // namespace Tovra::Simulator
