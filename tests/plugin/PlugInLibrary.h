#pragma once

#include "host/DeviceConfig.h"
#include "host/ITargetSpecific.h"

namespace Tovra::TestSupport
{

/** libcorvane_KX22.so, loaded as the host loads it; closed at the end. */
class PlugInLibrary
{
public:
    PlugInLibrary(); ///< throws std::runtime_error
    ~PlugInLibrary();

    PlugInLibrary(const PlugInLibrary&) = delete;
    PlugInLibrary& operator=(const PlugInLibrary&) = delete;

    ITargetSpecific* GetInterface(DeviceConfig& config) const;

    void* GetHandle() const { return pHandle; }

private:
    void* pHandle;
};

} // namespace Tovra::TestSupport
