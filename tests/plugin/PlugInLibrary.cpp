#include "tests/plugin/PlugInLibrary.h"

#include <dlfcn.h>
#include <stdexcept>

namespace Tovra::TestSupport
{

PlugInLibrary::PlugInLibrary() : pHandle(dlopen(CORVANE_PLUGIN, RTLD_NOW | RTLD_LOCAL))
{
    if (!pHandle)
        throw std::runtime_error(dlerror());
}

PlugInLibrary::~PlugInLibrary()
{
    dlclose(pHandle);
}

ITargetSpecific* PlugInLibrary::GetInterface(DeviceConfig& config) const
{
    const auto fnEntry = reinterpret_cast<decltype(&GetTargetSpecificInterface)>(
        dlsym(pHandle, "GetTargetSpecificInterface"));
    if (!fnEntry)
        throw std::runtime_error(dlerror());
    return fnEntry(config);
}

} // namespace Tovra::TestSupport
