#include "Include/D-Bus.h"
#include "tests/support/DataExpectation.h"
#include "tests/support/DataText.h"
#include "tests/support/DataTrees.h"
#include "tests/support/PeerTest.h"

#include <dbus/dbus.h>
#include <gtest/gtest.h>

namespace Tovra::DBus
{

namespace
{

constexpr std::size_t nMebibyte = 1024 * 1024;

Data Marked(Data data)
{
    return data.SetVariant(true);
}

Data EmptyInVariant()
{
    return Marked(Data());
}

/** Arrays of one variant each, two levels for each of them, around `innermost`. */
Data Tower(int nStoreys, Data innermost)
{
    for (int nStorey = 0; nStorey < nStoreys; ++nStorey)
        innermost = Data::MakeArray(Data::Variant, {Marked(std::move(innermost))});
    return innermost;
}

/** Dictionaries of one variant each, three levels for each of them. */
Data DictionaryTower(int nStoreys, Data innermost)
{
    for (int nStorey = 0; nStorey < nStoreys; ++nStorey)
        innermost = Data::MakeDictionary(Data::Variant, {{"k", Marked(std::move(innermost))}});
    return innermost;
}

} // namespace

/** What would have libdbus abort the process, or the bus close the connection. */
class DataRefusal : public TestSupport::PeerTest
{
protected:
    /** Expects a refusal by itself and from inside lists. */
    void ExpectRefusedAnywhere(const Data& data)
    {
        ExpectRefused(data);
        ExpectRefused(Marked(data));
        const Data good = Data::MakeBool(true, true);
        ExpectRefused(Data::MakeArray(Data::Variant, {good, Marked(data)}));
        ExpectRefused(Data::MakeDictionary(Data::Variant, {{"a", good}, {"b", Marked(data)}}));
        ExpectRefused(Tower(3, data));
    }

    void ExpectDelivered(const Data& data)
    {
        const Message reply = connection.SendWithReplyBlocking(NewCall().Add(data), -1);
        ASSERT_TRUE(reply);
        EXPECT_EQ(TestSupport::Describe(reply.Contents()),
                  TestSupport::Describe(TestSupport::Expectation(data).value()));
        EXPECT_TRUE(dbus_connection_get_is_connected(connection.Get()));
    }
};

class BadPath : public DataRefusal, public testing::WithParamInterface<std::string>
{
};

TEST_P(BadPath, IsRefused)
{
    ExpectRefusedAnywhere(Data::MakeObjectPath(GetParam()));
    ExpectRefused(Data::MakeArray(
        Data::ObjectPath, {Data::MakeObjectPath("/good"), Data::MakeObjectPath(GetParam())}));
    ExpectRefused(
        Data::MakeDictionary(Data::ObjectPath, {{"k", Data::MakeObjectPath(GetParam())}}));
}

INSTANTIATE_TEST_SUITE_P(DataRefusal, BadPath,
                         testing::Values("", "a", "a/b", "//", "/a/", "/a//b", "/a-b", "/a.b",
                                         "/a b", "/a\xC3\xA9", "/\xFF", "/a\n",
                                         std::string("/a\0", 3), std::string("/a\0b", 4),
                                         std::string("\0", 1)));

TEST_F(DataRefusal, AnEmptyValueWithTheMarkIsRefused)
{
    ExpectRefusedAnywhere(EmptyInVariant());
}

TEST_F(DataRefusal, AnEmptyValueThatCameOutOfAVariantIsRefused)
{
    const auto fnFill = [](sd_bus_message* pMessage) {
        return sd_bus_message_append(pMessage, "va{sv}", "as", 0, 2, "A", "as", 0, "B", "s", "x");
    };
    const std::vector<Data> vecRead = Receive(fnFill).Contents(0);
    ExpectRefusedAnywhere(vecRead[0]);
    ExpectRefusedAnywhere(vecRead[1]);
}

TEST_F(DataRefusal, AnInvalidValueIsRefused)
{
    ExpectRefusedAnywhere(TestSupport::GetInvalid());
    ExpectRefused(Data::MakeArray(Data::Invalid, {TestSupport::GetInvalid()}));
}

TEST_F(DataRefusal, ElementTypesWithoutACompleteCodeAreRefused)
{
    for (const auto type : {Data::Empty, Data::Invalid, Data::Array, Data::Dictionary,
                            static_cast<Data::Type>(7), static_cast<Data::Type>(-3)}) {
        SCOPED_TRACE(type);
        ExpectRefusedAnywhere(Data::MakeArray(type));
        ExpectRefusedAnywhere(Data::MakeDictionary(type));
    }
}

TEST_F(DataRefusal, ListsOfListsAreRefused)
{
    const Data list = Data::MakeStringArray({"a"});
    const Data dictionary = Data::MakeDictionary(Data::String, {{"k", Data::MakeString("v")}});
    ExpectRefused(Data::MakeArray(Data::Array, {list}));
    ExpectRefused(Data::MakeArray(Data::Dictionary, {dictionary}));
    ExpectRefused(Data::MakeDictionary(Data::Array, {{"k", list}}));
    ExpectRefused(Data::MakeDictionary(Data::Dictionary, {{"k", dictionary}}));
}

TEST_F(DataRefusal, AnElementOfAnotherTypeIsRefusedWhereverItStands)
{
    const Data text = Data::MakeString("a");
    const Data number = Data::MakeUInt32(1);
    ExpectRefusedAnywhere(Data::MakeArray(Data::String, {number}));
    ExpectRefusedAnywhere(Data::MakeArray(Data::String, {text, number}));
    ExpectRefusedAnywhere(Data::MakeArray(Data::String, {number, text}));
    ExpectRefusedAnywhere(Data::MakeDictionary(Data::String, {{"a", number}, {"b", text}}));
    ExpectRefusedAnywhere(Data::MakeDictionary(Data::String, {{"a", text}, {"b", number}}));
}

TEST_F(DataRefusal, TypesThatLookAlikeAreToldApart)
{
    ExpectRefused(Data::MakeArray(Data::String, {Data::MakeObjectPath("/a")}));
    ExpectRefused(Data::MakeArray(Data::ObjectPath, {Data::MakeString("/a")}));
    ExpectRefused(Data::MakeArray(Data::UInt32, {Data::MakeBool(true)}));
    ExpectRefused(Data::MakeArray(Data::Bool, {Data::MakeUInt32(1)}));
}

TEST_F(DataRefusal, AnElementWithTheMarkIsRefusedWhereNoVariantIsDeclared)
{
    ExpectRefusedAnywhere(Data::MakeArray(Data::Bool, {Data::MakeBool(true, true)}));
    ExpectRefusedAnywhere(Data::MakeDictionary(Data::Bool, {{"k", Data::MakeBool(true, true)}}));
}

TEST_F(DataRefusal, AnElementWithoutTheMarkIsRefusedWhereVariantsAreDeclared)
{
    ExpectRefusedAnywhere(Data::MakeArray(Data::Variant, {Data::MakeBool(true)}));
    ExpectRefusedAnywhere(Data::MakeDictionary(Data::Variant, {{"k", Data::MakeBool(true)}}));
}

TEST_F(DataRefusal, AnEmptyElementIsRefusedUnderEveryElementType)
{
    for (const auto type :
         {Data::Variant, Data::Bool, Data::UInt32, Data::String, Data::ObjectPath, Data::Empty}) {
        SCOPED_TRACE(type);
        ExpectRefusedAnywhere(Data::MakeArray(type, {Data()}));
        ExpectRefusedAnywhere(Data::MakeArray(type, {EmptyInVariant()}));
        ExpectRefusedAnywhere(Data::MakeDictionary(type, {{"k", Data()}}));
        ExpectRefusedAnywhere(Data::MakeDictionary(type, {{"k", EmptyInVariant()}}));
    }
}

TEST_F(DataRefusal, AStructThatWasReadIsRefused)
{
    const auto fnFill = [](sd_bus_message* pMessage) {
        return sd_bus_message_append(pMessage, "(oa{sv})", "/service", 1, "k", "b", 1);
    };
    ExpectRefusedAnywhere(Read(fnFill));
}

TEST_F(DataRefusal, TheDeepestArraysAreDelivered)
{
    ExpectDelivered(Tower(32, Data::MakeUInt32(64)));
    ExpectDelivered(Marked(Tower(31, Data::MakeStringArray({"level 64"}))));
}

TEST_F(DataRefusal, ArraysOneLevelDeeperAreRefused)
{
    ExpectRefused(Marked(Tower(32, Data::MakeUInt32(65))));
    ExpectRefused(Tower(32, Data::MakeStringArray({"level 65"})));
}

TEST_F(DataRefusal, TheDeepestDictionariesAreDelivered)
{
    ExpectDelivered(Marked(DictionaryTower(21, Data::MakeUInt32(64))));
    ExpectDelivered(
        Tower(1, DictionaryTower(
                     20, Data::MakeDictionary(Data::String, {{"level", Data::MakeString("64")}}))));
}

TEST_F(DataRefusal, DictionariesOneLevelDeeperAreRefused)
{
    ExpectRefused(Tower(1, DictionaryTower(21, Data::MakeUInt32(65))));
    const Data innermost = Data::MakeDictionary(Data::String, {{"level", Data::MakeString("65")}});
    ExpectRefused(DictionaryTower(21, innermost));
    ExpectRefused(Marked(Tower(1, DictionaryTower(20, innermost))));
}

// Nothing lies inside it, so nothing lies too deep.
TEST_F(DataRefusal, AnEmptyArrayInsideTheDeepestVariantIsDelivered)
{
    ExpectDelivered(Tower(32, Data::MakeStringArray({})));
    ExpectDelivered(Tower(32, Data::MakeDictionary(Data::Variant)));
}

TEST_F(DataRefusal, FarTooDeepValuesAreRefused)
{
    ExpectRefused(Tower(1000, Data::MakeBool(true)));
    ExpectRefused(DictionaryTower(1000, Data::MakeBool(true)));
}

TEST_F(DataRefusal, AVariantThatTheCallerOpenedCountsAsALevel)
{
    const auto fnArrivedInVariant = [this](const std::vector<Data>& vecData) {
        const Message message = NewCall();
        DBusMessageIter iter;
        DBusMessageIter variant;
        dbus_message_iter_init_append(message.Get(), &iter);
        dbus_message_iter_open_container(&iter, DBUS_TYPE_VARIANT, "av", &variant);
        for (const Data& data : vecData)
            data.AddToMessage(&variant, true);
        dbus_message_iter_close_container(&iter, &variant);
        const Message reply = connection.SendWithReplyBlocking(message, -1);
        return TestSupport::Describe(reply.Contents());
    };
    const Data deepest = Tower(31, Data::MakeStringArray({"level 64"}));
    EXPECT_EQ(fnArrivedInVariant({deepest}),
              TestSupport::Describe(TestSupport::Expectation(Marked(deepest)).value()));
    const Data deeper = Tower(32, Data::MakeBool(true));
    EXPECT_EQ(fnArrivedInVariant({deeper, Tower(1, Data::MakeBool(true))}),
              "<Array of Bool [<Bool true>]>");
}

TEST_F(DataRefusal, AnAlmostTooLargeTextIsDelivered)
{
    const std::string sText(32 * nMebibyte - 128 * 1024, 'x');
    const Message reply =
        connection.SendWithReplyBlocking(NewCall().Add(Data::MakeString(sText)), -1);
    ASSERT_TRUE(reply);
    EXPECT_TRUE(reply.Contents().As<std::string>() == sText);
}

TEST_F(DataRefusal, ATooLargeTextIsRefused)
{
    const std::string sText(32 * nMebibyte, 'x');
    ExpectRefusedAnywhere(Data::MakeString(sText));
    ExpectRefused(Data::MakeObjectPath("/" + sText));
    ExpectRefused(Data::MakeDictionary(Data::Bool, {{sText, Data::MakeBool(true)}}));
}

TEST_F(DataRefusal, ATextThatMendingMakesTooLargeIsRefused)
{
    ExpectRefused(Data::MakeString(std::string(11 * nMebibyte, '\xFF')));
}

TEST_F(DataRefusal, ManyTextsThatAreTooLargeTogetherAreRefused)
{
    const std::string sText(nMebibyte, 'x');
    ExpectRefused(Data::MakeStringArray(std::vector<std::string>(32, sText)));
    Data data = Data::MakeDictionary(Data::String);
    for (char nKey = 'A'; nKey < 'A' + 32; ++nKey)
        data.As<std::map<std::string, Data>>()[std::string(1, nKey)] = Data::MakeString(sText);
    ExpectRefused(data);
}

// Each takes 20 bytes: its length, 15 characters and a zero.
TEST_F(DataRefusal, ManySmallElementsThatAreTooLargeTogetherAreRefused)
{
    const Data element = Data::MakeString(std::string(15, 'x'));
    const std::size_t nCount = 32 * nMebibyte / 20;
    ExpectRefused(Data::MakeArray(Data::String, std::vector<Data>(nCount, element)));
}

} // namespace Tovra::DBus
