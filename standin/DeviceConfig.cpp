#include "host/DeviceConfig.h"

#include "host/Qel.h"

namespace Tovra
{

void DeviceConfig::RefreshIpSettings()
{
    if (QelLoggingStateIsActive(QelLogInfo))
        QelLog(QelLogInfo, "The device's addresses may have changed.", "RefreshIpSettings",
               "standin/DeviceConfig", 12);
}

} // namespace Tovra
