#pragma once

#include "corvane/Request.h"

/**
 * What can be seen to be wrong before anything is sent. Plain functions; each throws Failure with
 * a line that says what is wrong and what would be right.
 */
namespace Tovra::Corvane::Checks
{

/** Dotted addresses, a netmask of leading ones, a gateway inside the network, name servers. */
void RequireAddresses(const StaticAddress& address);

/** 8 to 63 characters or 64 hexadecimal digits; never names the passphrase itself. */
void RequirePskPassphrase(const std::string& sPassphrase);

} // namespace Tovra::Corvane::Checks
