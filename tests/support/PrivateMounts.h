#pragma once

namespace Tovra::TestSupport
{

/**
 * Puts the process into a mount namespace of its own, where /opt is empty, writable and gone with
 * the process; as an ordinary user, into a user namespace too. To be called first thing in main():
 * it starts the program anew, since the sanitizers' own threads keep a process from changing its
 * namespaces. Ends the process with one clear line where the system does not allow it.
 */
void EnterPrivateMounts(char** pArguments);

} // namespace Tovra::TestSupport
