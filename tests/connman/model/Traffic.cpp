#include "tests/connman/model/Traffic.h"

namespace Tovra::ConnManModel
{

std::string Describe(const Traffic& traffic)
{
    const std::string sArguments =
        (traffic.bError ? " error: " : ": ") + TestSupport::Describe(traffic.vecArguments);
    switch (traffic.way) {
    case Traffic::Way::Signal:
        return traffic.origin.sPath + " " + traffic.origin.sInterface + "." +
               traffic.origin.sMember + sArguments;
    case Traffic::Way::ServicesAnswer:
        return "GetServices" + sArguments;
    case Traffic::Way::TechnologiesAnswer:
        return "GetTechnologies" + sArguments;
    default:
        return "nothing";
    }
}

} // namespace Tovra::ConnManModel
