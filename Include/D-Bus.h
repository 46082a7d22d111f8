#pragma once

/**
 * The D-Bus layer: values, handles and one dispatch thread over libdbus.
 *
 * Nothing here reports an error: a failure shows as an empty handle, a zero serial number, a false
 * result or an `Empty` value. Texts that libdbus would abort the process for are refused or mended
 * before they reach it; what cannot be refused is a precondition and stands at its declaration.
 *
 * Threads. Values are plain objects, for one thread at a time. A handle may be used by any number
 * of threads, but assigned or destroyed by one while no other uses it; a message is extended by
 * one. All operations of a connection but `Dispatch` may be called by any thread while another one
 * dispatches. Every callback runs on the thread that calls `Connection::Dispatch`, one at a time.
 */

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

struct DBusConnection;
struct DBusMessage;
struct DBusMessageIter;
struct DBusPendingCall;

namespace Tovra::DBus
{

/**
 * One D-Bus argument, in either direction: a tagged value that owns its text or its elements, and
 * with them a whole tree. Copies are deep. A copy that throws leaves its target as it was; a value
 * may be assigned from itself and from any value inside it; what was moved from is `Empty`.
 *
 * Reading maps D-Bus types to fewer alternatives: y, q and u become `UInt32`; a struct becomes an
 * `Array` of its members; an empty array, struct or dictionary becomes `Empty`; a variant becomes
 * its contents with the variant mark, however many variants were nested; every type that is not
 * carried becomes `Invalid`, with one line on standard error.
 *
 * No shared state: whichever thread has the value may use it.
 */
class Data
{
public:
    enum Type : std::int32_t {
        Variant = -2, ///< only as an element type: each element travels in a variant of its own
        Invalid = -1, ///< read from a D-Bus type that is not carried
        Empty = 0,    ///< nothing: the default, and what is read past the last argument
        Bool = 1,
        UInt32 = 2,
        String = 3,
        ObjectPath = 4,
        Array = 5,
        Dictionary = 6, ///< string keys
    };

    /** `Empty`, without the variant mark. */
    Data() noexcept = default;

    /**
     * Reads the argument at the iterator's position; the iterator is not advanced. Depth is bounded
     * by libdbus, which accepts no message nested deeper than 64 levels.
     * Throws only std::bad_alloc, and then releases what it had gathered: when memory runs out, and
     * instead of using it up for an argument of more than a million values.
     */
    explicit Data(const DBusMessageIter* iter);

    struct Reader;
    Data(const DBusMessageIter* iter, Reader& reader); ///< for the reader itself

    Data(const Data& data);
    Data(Data&& data) noexcept;
    Data& operator=(const Data& data);
    Data& operator=(Data&& data) noexcept;
    ~Data();

    /** Values to send. The texts are kept as given; see `AddToMessage` for what goes out. */
    static Data MakeBool(bool bValue, bool bVariant = false);
    static Data MakeUInt32(std::uint32_t nValue);
    static Data MakeString(std::string sText, bool bVariant = false);
    static Data MakeObjectPath(std::string sPath);
    static Data MakeStringArray(const std::vector<std::string>& vecTexts);

    /**
     * The elements must agree with the element type: for `Variant` each bears the variant mark, for
     * any other type each has that type and no mark. Elements may also be added later, through
     * `As`. A value that does not keep to this cannot be written (see `AddToMessage`).
     */
    static Data MakeArray(Type elementType, std::vector<Data> vecElements = {});
    static Data MakeDictionary(Type elementType, std::map<std::string, Data> mapEntries = {});

    Type GetType() const noexcept { return m_type; }

    /**
     * Of an `Array` the type of its elements, of a `Dictionary` that of its values; of one that was
     * read, the type of the first element or of the value under the smallest key.
     */
    Type GetElementType() const noexcept { return m_elementType; }

    /** Whether the value came out of a variant, or is to go out in one. */
    bool IsVariant() const noexcept { return m_variant; }
    Data& SetVariant(bool bVariant) noexcept;

    /**
     * The alternative held: std::string (tag `String` alone), std::vector<Data>, bool,
     * std::uint32_t or std::map<std::string, Data>. Throws std::bad_cast on any other tag; nothing
     * is ever converted.
     */
    template <class T> T& As();
    template <class T> const T& As() const;

    /** The text of an `ObjectPath`; std::bad_cast on any other tag. */
    const std::string& ObjectPathText() const;

    /** In-place assignment of a value of the same type; the variant mark stays as it is. */
    void Assign(const Data& data);

    /**
     * Appends the value at the iterator; `inVariant` tells that the caller has already opened the
     * value's variant. In a text each byte that D-Bus does not allow (not UTF-8, or zero) goes out
     * as U+FFFD.
     *
     * Appends nothing at all, rather than let libdbus abort the process or the bus drop the
     * connection, when the value or anything inside it cannot be written: an object path that is
     * none; elements that do not agree with the element type; an element type without a complete
     * code (`Array`, `Dictionary`, `Invalid`, `Empty`); more than 64 levels; more than a system bus
     * takes in one message (32 MiB). `Empty`, `Invalid` and `Variant` append nothing either.
     */
    void AddToMessage(DBusMessageIter* iter, bool inVariant) const;

    /** The D-Bus code of a type: "ae" for `Dictionary`, null for `Invalid` and `Empty`. */
    static const char* TypeCode(Type type) noexcept;

    /**
     * The D-Bus signature of a value: in full, or as the element signature of the array container
     * that is opened for it. Empty where a code is missing.
     */
    static std::string Signature(const Data& data, bool bFull);

private:
    struct DoDestroy;
    struct DoCopy;
    struct DoMove;
    struct DoAssign;

    template <class T> Data(Type type, Type elementType, bool bVariant, T&& alternative);
    template <class T> T& Stored() noexcept;
    template <class T> const T& Stored() const noexcept;
    template <class Visitor, class Arg> void Apply(Visitor visitor, const Arg& arg, Type type);
    void Reset() noexcept;
    void Take(Data& data) noexcept;
    void Write(DBusMessageIter* iter, bool inVariant) const;
    void WriteContainer(DBusMessageIter* iter) const;

    Type m_type = Empty;
    Type m_elementType = Empty;
    bool m_variant = false;
    // A map has the same size whatever it holds; Data.cpp checks it for the real one.
    std::aligned_union_t<1, bool, std::uint32_t, std::string, std::vector<char>,
                         std::map<std::string, char>>
        m_storage;
};

extern template bool& Data::As<bool>();
extern template std::uint32_t& Data::As<std::uint32_t>();
extern template std::string& Data::As<std::string>();
extern template std::vector<Data>& Data::As<std::vector<Data>>();
extern template std::map<std::string, Data>& Data::As<std::map<std::string, Data>>();
extern template const bool& Data::As<bool>() const;
extern template const std::uint32_t& Data::As<std::uint32_t>() const;
extern template const std::string& Data::As<std::string>() const;
extern template const std::vector<Data>& Data::As<std::vector<Data>>() const;
extern template const std::map<std::string, Data>& Data::As<std::map<std::string, Data>>() const;

/** libdbus's reference counts, for `Handle`. The pointers are not null. Any thread. */
void AddReference(DBusConnection* pConnection) noexcept;
void AddReference(DBusMessage* pMessage) noexcept;
void AddReference(DBusPendingCall* pPending) noexcept;
void ReleaseReference(DBusConnection* pConnection) noexcept;
void ReleaseReference(DBusMessage* pMessage) noexcept;
void ReleaseReference(DBusPendingCall* pPending) noexcept;

/**
 * What the three handles share: one pointer to a reference-counted libdbus object, which may be
 * null (an empty handle). Copying takes a reference, destruction releases it, moving leaves the
 * source empty. No operation throws.
 */
template <class Object> class Handle
{
public:
    Handle() noexcept = default;

    Handle(const Handle& other) noexcept : pObject(other.pObject)
    {
        if (pObject)
            AddReference(pObject);
    }

    Handle(Handle&& other) noexcept : pObject(std::exchange(other.pObject, nullptr)) {}

    // By value: the new reference is taken before the old one goes, so self-assignment is safe.
    Handle& operator=(Handle other) noexcept
    {
        std::swap(pObject, other.pObject);
        return *this;
    }

    ~Handle()
    {
        if (pObject)
            ReleaseReference(pObject);
    }

    explicit operator bool() const noexcept { return pObject != nullptr; }

    /** The libdbus object, still owned by the handle; null when empty. For this layer and tests. */
    Object* Get() const noexcept { return pObject; }

protected:
    /** Takes over the one reference that libdbus handed out with the pointer. */
    explicit Handle(Object* pAdopted) noexcept : pObject(pAdopted) {}

private:
    Object* pObject = nullptr;
};

/** A D-Bus message. Operations on an empty one are harmless. */
class Message : public Handle<DBusMessage>
{
public:
    Message() noexcept = default;

    /**
     * A method call. Destination and interface may be null, path and method may not. Empty when a
     * text is not what D-Bus allows in its place, or is a name that only a bus library may use
     * ("/org/freedesktop/DBus/Local", "org.freedesktop.DBus.Local"): the bus drops a connection
     * that sends them.
     */
    Message(const char* destination, const char* path, const char* interface, const char* method);

    /** Takes over the caller's reference. */
    static Message Adopt(DBusMessage* pMessage) noexcept;

    /** Takes a reference of its own. */
    static Message Reference(DBusMessage* pMessage) noexcept;

    /** The reply to a method call that was received; empty for anything else. */
    Message ReturnMessage() const;

    /**
     * Asks the receiver not to reply, so that the bus keeps no account of the call. Nothing happens
     * on an empty message or one that was sent or received already.
     */
    Message& SetNoReply();

    /** "method_call", "method_return", "error", "signal" or "invalid"; "" for an empty message. */
    const char* GetType() const;

    /**
     * Appends one argument. What cannot be written leaves the message as it was, one argument short
     * of what its receiver waits for: a value that `Data::AddToMessage` refuses (`IsWritable` in
     * Writability.h tells), or one too many for a signature (255 characters). Nothing is added to a
     * message that was sent or received already. All arguments together must stay below what a
     * system bus takes in one message (32 MiB): it closes the connection.
     */
    Message& Add(const Data& data);

    /** The first argument; `Empty` when there is none. */
    Data Contents() const;

    /**
     * The first `count` arguments, the missing ones `Empty`; with 0 all of them, and a single
     * `Empty` for a message without arguments.
     */
    std::vector<Data> Contents(unsigned count) const;

private:
    explicit Message(DBusMessage* pAdopted) noexcept : Handle(pAdopted) {}
};

/** A method call whose reply is awaited. */
class PendingCall : public Handle<DBusPendingCall>
{
public:
    PendingCall() noexcept = default;

    /** As for `Message`. */
    static PendingCall Adopt(DBusPendingCall* pPending) noexcept;
    static PendingCall Reference(DBusPendingCall* pPending) noexcept;

    /**
     * Has `callback` called once, on the dispatching thread, when the reply or an error is there.
     * Nothing happens on an empty handle. libdbus forgets a callback that is set after completion,
     * so the call must have been sent on the dispatching thread, or before that thread runs: only
     * then can the reply not overtake this operation.
     * What the callback throws (an empty one std::bad_function_call) leaves `Dispatch`.
     */
    void SetOnComplete(const std::function<void(PendingCall&)>& callback);

    /** Whether the reply or an error is there. Not on an empty handle: libdbus ends the process. */
    bool IsCompleted() const;

    /**
     * The reply, once: empty before completion and from the second time on. An error reply is a
     * message of type "error". Must not be called on an empty handle: libdbus ends the process.
     */
    Message ReceiveReply();

private:
    explicit PendingCall(DBusPendingCall* pAdopted) noexcept : Handle(pAdopted) {}
};

/**
 * A connection to a message bus or to one peer. Operations on an empty one are harmless, `Send`
 * excepted. A text that is null or not what D-Bus allows in its place makes the operation do
 * nothing.
 *
 * A connection that its bus closed never ends the process: `Dispatch` returns true from then on,
 * and calls give empty results.
 */
class Connection : public Handle<DBusConnection>
{
public:
    Connection() noexcept = default;

    /** Opens a connection to a D-Bus address; empty on failure. It is not registered with a bus. */
    explicit Connection(const char* address);
    explicit Connection(const std::string& address);

    /**
     * The connection to the system or session bus that libdbus shares within the process; empty
     * when it cannot be reached. Blocks until the bus has answered. From then on whoever shares it
     * is not ended when the bus goes away, and a main loop of others' is not woken for it any more.
     */
    static Connection SystemBus();
    static Connection SessionBus();

    /**
     * Asks the bus for a well-known name, replacing an owner that allows it, and waits for the
     * answer. Returns libdbus's result (1: primary owner), -1 on failure, 0 if nothing was asked.
     */
    int Name(const char* name);

    /** Asks the bus for all signals of an interface; does not wait for its answer. */
    void Listen(const char* interface);

    /**
     * Has `callback` called for each signal that matches, with the path it came from ("" if it
     * bears none). A matched signal is consumed: where two subscriptions are alike, the first
     * installed sees it. Stays until the connection is gone. What the callback throws leaves
     * `Dispatch`; an empty one throws std::bad_function_call.
     */
    void Signal(const char* interface, const char* member,
                const std::function<void(const std::string&, const Message&)>& callback);

    /**
     * Has `callback` called for each method call to `path`, with its interface ("" if it names
     * none) and member. The callback sends the reply itself and returns true; on false the caller
     * receives an unknown-method error. What it throws leaves `Dispatch` and counts as false; an
     * empty one throws std::bad_function_call. If the path is taken, nothing changes and libdbus
     * says so on standard error.
     */
    void RegisterObject(const char* path,
                        const std::function<bool(const std::string&, const std::string&,
                                                 const Message&)>& callback);

    /**
     * Queues a message and writes as much of it as the socket takes; never waits. Any thread.
     * Returns its serial number, 0 when it was not queued. Neither the connection nor the message
     * may be empty: libdbus ends the process.
     */
    std::uint32_t Send(const Message& message);

    /**
     * Sends a method call whose reply is awaited; `timeout` in ms, negative for libdbus's own
     * (25 s). Empty when the connection or the message is empty or the connection is closed.
     * See `PendingCall::SetOnComplete` for the thread it must be called on. A reply that never
     * comes never completes the call: `Dispatch` runs no timers.
     */
    PendingCall SendWithReply(const Message& message, int timeout);

    /**
     * Sends a method call and waits for its reply. Empty on an error reply, a time-out or a closed
     * connection. Belongs before the dispatch thread runs: it is safe then too, but what other
     * threads send meanwhile may wait until it is over.
     */
    Message SendWithReplyBlocking(const Message& message, int timeout);

    /**
     * Reads, writes and dispatches, and returns after at most `timeout` ms (negative: no limit) on
     * a live connection: false. Returns true, and at once, when the connection is closed and all
     * that had arrived is dispatched; false on an empty handle. Throws what a callback threw. One
     * thread at a time.
     *
     * While there is nothing to do it sleeps on the connection's descriptor without holding
     * libdbus's I/O lock, so that what another thread sends meanwhile leaves at once.
     */
    bool Dispatch(int timeout);

private:
    explicit Connection(DBusConnection* pAdopted);
};

static_assert(sizeof(Connection) == sizeof(void*), "a handle is one pointer");
static_assert(sizeof(Message) == sizeof(void*), "a handle is one pointer");
static_assert(sizeof(PendingCall) == sizeof(void*), "a handle is one pointer");

/**
 * The connection to the system bus and one background thread, "DBusThread", that dispatches it.
 *
 * Once the bus has closed the connection, the running thread spins on it and cannot be stopped:
 * destruction then never returns.
 */
class Thread
{
public:
    /** Connects; starts no thread, and does not fail for want of a bus. Any thread. */
    Thread();

    /**
     * Stops and joins the thread: within 500 ms plus the time of a callback that is running. On the
     * dispatch thread itself only by exit() in a callback, which does not return to it.
     */
    ~Thread();

    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    /**
     * Starts the dispatch thread unless it runs or there is no bus. Any thread, any number of
     * times, in a callback too. Throws when the system gives no thread, and leaves everything as it
     * was. A callback that throws on the thread ends the process.
     */
    void RunIfNotRunning();

    /** The connection itself, for sending and for installing callbacks; empty without a bus. */
    Connection& GetDbusConnection() const;

private:
    class Impl;
    std::unique_ptr<Impl> pImpl;
};

} // namespace Tovra::DBus
