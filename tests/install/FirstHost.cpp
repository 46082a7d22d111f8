#include <dlfcn.h>
#include <host/DeviceConfig.h>
#include <host/ITargetSpecific.h>
#include <iostream>

/** The least that a host does, from the installed headers. */
int main(int /*nArguments*/, char** ppArguments)
{
    void* const pLibrary = dlopen(ppArguments[1], RTLD_NOW);
    if (!pLibrary) {
        std::cout << dlerror() << "\n";
        return 1;
    }
    using Entry = decltype(&GetTargetSpecificInterface);
    const auto pEntry = reinterpret_cast<Entry>(dlsym(pLibrary, "GetTargetSpecificInterface"));
    if (!pEntry) {
        std::cout << dlerror() << "\n";
        return 1;
    }
    // Lives until the process has ended.
    static auto& config = *new Tovra::DeviceConfig;
    Tovra::ITargetSpecific* const pPlugIn = pEntry(config);
    std::cout << "read " << pPlugIn->TargetSpecificGetNetworkConfiguration() << ", applied "
              << pPlugIn->TargetSpecificSetNetworkConfiguration() << ", "
              << config.mapNetworkServices.size() << " networks\n";
    return 0;
}
