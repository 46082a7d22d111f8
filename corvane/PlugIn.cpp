#include "corvane/PlugIn.h"

#include "corvane/Status.h"

#include <dlfcn.h>

namespace Tovra::Corvane
{

ITargetSpecific& LoadPlugIn(const std::string& sLibrary, DeviceConfig& config)
{
    void* const pLibrary = dlopen(sLibrary.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!pLibrary)
        throw Failure(Status::BadInput, std::string("cannot load the plug-in: ") + dlerror() +
                                            "; --library names another one");
    using Entry = ITargetSpecific*(DeviceConfig&);
    auto* const pEntry = reinterpret_cast<Entry*>(dlsym(pLibrary, "GetTargetSpecificInterface"));
    if (!pEntry)
        throw Failure(Status::BadInput, sLibrary + " is no target-specific plug-in: it has no "
                                                   "GetTargetSpecificInterface");
    ITargetSpecific* const pInterface = pEntry(config);
    if (!pInterface)
        throw Failure(Status::Error, sLibrary + " gave no interface");
    pInterface->TargetSpecificLoad();
    return *pInterface;
}

} // namespace Tovra::Corvane
