#include "Common/ConnMan.h"

namespace Tovra
{

// In a file of its own: whoever links the client without naming this object meets no bus at load.
ConnManThread globalConnManThread;

} // namespace Tovra
