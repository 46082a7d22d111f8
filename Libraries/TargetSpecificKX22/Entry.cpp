#include "Libraries/TargetSpecificKX22/TargetSpecificKX22.h"

namespace
{

/**
 * The plug-in's object. At the process's exit it stays as it is: an observer that is being told
 * something then may still call its operations, and destruction, which does nothing else, would
 * leave it without them.
 */
union Instance {
    explicit Instance(Tovra::DeviceConfig& config) : plugIn(config) {}
    ~Instance() {} // NOLINT(modernize-use-equals-default): that would be a deleted one

    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    Tovra::TargetSpecificKX22 plugIn;
};

} // namespace

Tovra::ITargetSpecific* GetTargetSpecificInterface(Tovra::DeviceConfig& config)
{
    static Instance instance(config);
    return &instance.plugIn;
}
