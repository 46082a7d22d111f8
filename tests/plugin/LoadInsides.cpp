#include "tests/plugin/Insides.h"

#include "tests/support/PrivateBus.h"

#include <dlfcn.h>
#include <stdexcept>

namespace Tovra::TestSupport
{

IInsides& LoadInsides()
{
    void* pHandle = dlopen(CORVANE_INSIDES, RTLD_NOW | RTLD_LOCAL);
    if (!pHandle)
        throw std::runtime_error(dlerror());
    const auto fnGet = reinterpret_cast<IInsides* (*)()>(dlsym(pHandle, "GetInsides"));
    if (!fnGet)
        throw std::runtime_error(dlerror());
    return *fnGet();
}

IInsides& LoadInsidesWithoutBus()
{
    GetSystemBus().Stop();
    return LoadInsides();
}

} // namespace Tovra::TestSupport
