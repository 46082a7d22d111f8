#pragma once

#include "Common/Commands.h"

#include <string>

/** Commands as texts, and the records they are made of. */
namespace Tovra::CommandText
{

/** "path interface member", then the arguments. */
std::string Describe(const Commands::Command& command);

/** A service of the type, whose path is "/" and the type, with a static address and name servers.
 */
ConnMan::NetworkService MakeService(const std::string& sType);

/** At "/technology". */
ConnMan::NetworkTechnology MakeTechnology();

} // namespace Tovra::CommandText
