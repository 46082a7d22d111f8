#include "tests/plugin/Insides.h"

#include "Libraries/TargetSpecificKX22/TargetSpecificKX22.h"

#include <new>

namespace Tovra::TestSupport
{

namespace
{

class Insides final : public IInsides
{
public:
    std::size_t GetSize() override { return sizeof(TargetSpecificKX22); }

    ITargetSpecific* MakeAt(void* pMemory, DeviceConfig& config) override
    {
        return new (pMemory) TargetSpecificKX22(config);
    }

    ITargetSpecific* Make(DeviceConfig& config) override
    {
        static auto& vecKept = *new std::vector<ITargetSpecific*>; // nobody deletes them
        return vecKept.emplace_back(new TargetSpecificKX22(config));
    }

    ITargetSpecific* MakeToDelete(DeviceConfig& config) override
    {
        return new TargetSpecificKX22(config);
    }

    void OnNetworksChanged(ITargetSpecific& plugIn, unsigned flags) override
    {
        static_cast<TargetSpecificKX22&>(plugIn).OnNetworksChanged(flags);
    }
};

Insides insides;

} // namespace

extern "C" [[gnu::visibility("default")]] IInsides* GetInsides()
{
    return &insides;
}

} // namespace Tovra::TestSupport
