#include "Libraries/TargetSpecificKX22/TargetSpecificKX22.h"

Tovra::ITargetSpecific* GetTargetSpecificInterface(Tovra::DeviceConfig& config)
{
    static Tovra::TargetSpecificKX22 plugIn(config);
    return &plugIn;
}
