#pragma once

struct DBusConnection;

namespace Tovra::DBus
{

/**
 * Gives a connection a descriptor through which libdbus ends a `WaitForWork` that sleeps: when
 * another thread has read a message for it, or left one half-written. It lives in a data slot of
 * the connection and goes with it. Does nothing if the connection has one. Any thread.
 */
void InstallWakeup(DBusConnection* pConnection);

/**
 * Sleeps until there is something to read, to write or to dispatch, for `timeout` ms at most
 * (negative: no limit). libdbus's I/O lock is not held meanwhile: a thread that sends can write.
 * Returns how long the read-write-dispatch that follows may itself wait, in ms: `timeout` where
 * nothing but libdbus can tell what to wait for, 0 otherwise. The dispatching thread only.
 */
int WaitForWork(DBusConnection* pConnection, int timeout);

} // namespace Tovra::DBus
