#pragma once

#include "Common/ConnMan.h"
#include "host/DeviceConfig.h"
#include "host/ITargetSpecific.h"

namespace Tovra::TestSupport
{

/**
 * The plug-in's class with what the host does not see of it, from a shared library of the tests'
 * own: linked into a test program, its client would meet the bus before main() has made one.
 */
class IInsides
{
public:
    virtual std::size_t GetSize() = 0;

    /**
     * Builds a plug-in: in the memory; in memory of its own, which stays; or for the caller to
     * delete. Its client calls it until the process ends.
     */
    virtual ITargetSpecific* MakeAt(void* pMemory, DeviceConfig& config) = 0;
    virtual ITargetSpecific* Make(DeviceConfig& config) = 0;
    virtual ITargetSpecific* MakeToDelete(DeviceConfig& config) = 0;

    virtual void OnNetworksChanged(ITargetSpecific& plugIn, unsigned flags) = 0;

protected:
    ~IInsides() = default;
};

/** Loads that library; it stays. Throws std::runtime_error. */
IInsides& LoadInsides();

/** The same once the bus has gone: then the client tells its plug-in nothing, ever. */
IInsides& LoadInsidesWithoutBus();

} // namespace Tovra::TestSupport
