#include "D-Bus.h"
#include "Wipe.h"

#include <cassert>
#include <new>
#include <typeinfo>

namespace Tovra::DBus
{

namespace
{

template <class T> constexpr Data::Type typeOf = Data::Invalid;
template <> constexpr Data::Type typeOf<bool> = Data::Bool;
template <> constexpr Data::Type typeOf<std::uint32_t> = Data::UInt32;
template <> constexpr Data::Type typeOf<std::string> = Data::String;
template <> constexpr Data::Type typeOf<std::vector<Data>> = Data::Array;
template <> constexpr Data::Type typeOf<std::map<std::string, Data>> = Data::Dictionary;

// Moving must not throw: assignment moves into a value that it has already emptied.
static_assert(std::is_nothrow_move_constructible_v<std::string>);
static_assert(std::is_nothrow_move_constructible_v<std::vector<Data>>);
static_assert(std::is_nothrow_move_constructible_v<std::map<std::string, Data>>);
static_assert(sizeof(std::map<std::string, Data>) == sizeof(std::map<std::string, char>));
static_assert(alignof(std::map<std::string, Data>) == alignof(std::map<std::string, char>));
static_assert(sizeof(std::vector<Data>) == sizeof(std::vector<char>));

} // namespace

// The visitors receive the place of the alternative, which DoCopy and DoMove have yet to fill.

struct Data::DoDestroy {
    template <class T> void operator()(T* pPlace, const Data&) const noexcept
    {
        std::launder(pPlace)->~T();
    }
};

struct Data::DoCopy {
    template <class T> void operator()(T* pPlace, const Data& source) const
    {
        new (pPlace) T(source.Stored<T>());
    }
};

struct Data::DoMove {
    Data& source;

    template <class T> void operator()(T* pPlace, const Data&) const noexcept
    {
        new (pPlace) T(std::move(source.Stored<T>()));
    }

    // A short text is copied, and may be a credential: nothing of it stays behind.
    void operator()(std::string* pPlace, const Data&) const noexcept
    {
        new (pPlace) std::string(std::move(source.Stored<std::string>()));
        Wipe(source.Stored<std::string>());
    }
};

struct Data::DoAssign {
    template <class T> void operator()(T* pPlace, const Data& source) const
    {
        T copy(source.Stored<T>()); // the source may lie inside what is about to go
        *std::launder(pPlace) = std::move(copy);
    }
};

template <class T> T& Data::Stored() noexcept
{
    return *std::launder(reinterpret_cast<T*>(&m_storage));
}

template <class T> const T& Data::Stored() const noexcept
{
    return *std::launder(reinterpret_cast<const T*>(&m_storage));
}

template <class Visitor, class Arg> void Data::Apply(Visitor visitor, const Arg& arg, Type type)
{
    void* const pStorage = &m_storage;
    switch (type) {
    case Bool:
        visitor(static_cast<bool*>(pStorage), arg);
        break;
    case UInt32:
        visitor(static_cast<std::uint32_t*>(pStorage), arg);
        break;
    case String:
    case ObjectPath:
        visitor(static_cast<std::string*>(pStorage), arg);
        break;
    case Array:
        visitor(static_cast<std::vector<Data>*>(pStorage), arg);
        break;
    case Dictionary:
        visitor(static_cast<std::map<std::string, Data>*>(pStorage), arg);
        break;
    case Variant:
    case Invalid:
    case Empty:
        break;
    }
}

template <class T>
Data::Data(Type type, Type elementType, bool bVariant, T&& alternative)
    : m_type(type),
      m_elementType(elementType),
      m_variant(bVariant)
{
    new (&m_storage) std::decay_t<T>(std::forward<T>(alternative));
}

Data::Data(const Data& data)
{
    Apply(DoCopy(), data, data.m_type);
    m_type = data.m_type;
    m_elementType = data.m_elementType;
    m_variant = data.m_variant;
}

Data::Data(Data&& data) noexcept
{
    Take(data);
}

Data& Data::operator=(const Data& data)
{
    if (m_type == data.m_type && m_elementType == data.m_elementType) {
        const bool bVariant = data.m_variant; // Assign may destroy the source
        Assign(data);
        m_variant = bVariant;
    } else {
        *this = Data(data);
    }
    return *this;
}

Data& Data::operator=(Data&& data) noexcept
{
    Data taken(std::move(data)); // the source may lie inside what is about to go
    Reset();
    Take(taken);
    return *this;
}

Data::~Data()
{
    Apply(DoDestroy(), *this, m_type);
}

void Data::Assign(const Data& data)
{
    assert(m_type == data.m_type);
    if (m_type == data.m_type)
        Apply(DoAssign(), data, m_type);
}

void Data::Reset() noexcept
{
    Apply(DoDestroy(), *this, m_type);
    m_type = Empty;
    m_elementType = Empty;
    m_variant = false;
}

// Into an Empty value only.
void Data::Take(Data& data) noexcept
{
    Apply(DoMove{data}, data, data.m_type);
    m_type = data.m_type;
    m_elementType = data.m_elementType;
    m_variant = data.m_variant;
    data.Reset();
}

Data Data::MakeBool(bool bValue, bool bVariant)
{
    return Data(Bool, Empty, bVariant, bValue);
}

Data Data::MakeUInt32(std::uint32_t nValue)
{
    return Data(UInt32, Empty, false, nValue);
}

Data Data::MakeString(std::string sText, bool bVariant)
{
    return Data(String, Empty, bVariant, std::move(sText));
}

Data Data::MakeObjectPath(std::string sPath)
{
    return Data(ObjectPath, Empty, false, std::move(sPath));
}

Data Data::MakeStringArray(const std::vector<std::string>& vecTexts)
{
    std::vector<Data> vecElements;
    vecElements.reserve(vecTexts.size());
    for (const std::string& sText : vecTexts)
        vecElements.push_back(MakeString(sText));
    return MakeArray(String, std::move(vecElements));
}

Data Data::MakeArray(Type elementType, std::vector<Data> vecElements)
{
    return Data(Array, elementType, false, std::move(vecElements));
}

Data Data::MakeDictionary(Type elementType, std::map<std::string, Data> mapEntries)
{
    return Data(Dictionary, elementType, false, std::move(mapEntries));
}

Data& Data::SetVariant(bool bVariant) noexcept
{
    m_variant = bVariant;
    return *this;
}

template <class T> T& Data::As()
{
    if (m_type != typeOf<T>)
        throw std::bad_cast();
    return Stored<T>();
}

template <class T> const T& Data::As() const
{
    if (m_type != typeOf<T>)
        throw std::bad_cast();
    return Stored<T>();
}

const std::string& Data::ObjectPathText() const
{
    if (m_type != ObjectPath)
        throw std::bad_cast();
    return Stored<std::string>();
}

template bool& Data::As<bool>();
template std::uint32_t& Data::As<std::uint32_t>();
template std::string& Data::As<std::string>();
template std::vector<Data>& Data::As<std::vector<Data>>();
template std::map<std::string, Data>& Data::As<std::map<std::string, Data>>();
template const bool& Data::As<bool>() const;
template const std::uint32_t& Data::As<std::uint32_t>() const;
template const std::string& Data::As<std::string>() const;
template const std::vector<Data>& Data::As<std::vector<Data>>() const;
template const std::map<std::string, Data>& Data::As<std::map<std::string, Data>>() const;

} // namespace Tovra::DBus
