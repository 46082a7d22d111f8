#include "Include/D-Bus.h"
#include "tests/support/BadTexts.h"
#include "tests/support/Dispatching.h"

#include <gtest/gtest.h>

namespace Tovra::DBus
{

namespace
{

using TestSupport::BadText;

std::string GetWhat(const testing::TestParamInfo<BadText>& info)
{
    return info.param.pWhat;
}

std::vector<BadText> WithoutNull(std::vector<BadText> vecTexts)
{
    vecTexts.erase(vecTexts.begin());
    return vecTexts;
}

class Texts : public testing::TestWithParam<BadText>
{
protected:
    ~Texts() override { EXPECT_TRUE(TestSupport::IsAlive(connection)); }

    const char* GetText() const { return GetParam().pText; }

    // Whether a subscription keeps its callback.
    bool Subscribes(const char* interface, const char* member)
    {
        const auto pKept = std::make_shared<int>();
        connection.Signal(interface, member, [pKept](const std::string&, const Message&) {});
        return pKept.use_count() > 1;
    }

    // The rules that all connections to the bus have, by what the bus itself tells.
    std::vector<Data> GetMatchRules()
    {
        const Message question("org.freedesktop.DBus", "/org/freedesktop/DBus",
                               "org.freedesktop.DBus.Debug.Stats", "GetAllMatchRules");
        const Data answer = connection.SendWithReplyBlocking(question, -1).Contents();
        std::vector<Data> vecRules;
        for (const auto& entry : answer.As<std::map<std::string, Data>>()) {
            if (entry.second.GetType() == Data::Array)
                vecRules.insert(vecRules.end(), entry.second.As<std::vector<Data>>().begin(),
                                entry.second.As<std::vector<Data>>().end());
        }
        return vecRules;
    }

    Connection connection = Connection::SystemBus();
};

} // namespace

class BadPath : public Texts
{
};

INSTANTIATE_TEST_SUITE_P(Texts, BadPath, testing::ValuesIn(TestSupport::GetBadPaths()), GetWhat);

TEST_P(BadPath, MakesAnEmptyMessage)
{
    EXPECT_FALSE(Message("net.a", GetText(), "net.a", "A"));
}

TEST_P(BadPath, RegistersNoObject)
{
    const auto pKept = std::make_shared<int>();
    connection.RegisterObject(GetText(), [pKept](const std::string&, const std::string&,
                                                 const Message&) { return true; });
    EXPECT_EQ(pKept.use_count(), 1);
}

class BadInterface : public Texts
{
};

INSTANTIATE_TEST_SUITE_P(Texts, BadInterface, testing::ValuesIn(TestSupport::GetBadInterfaces()),
                         GetWhat);

TEST_P(BadInterface, IsNotListenedTo)
{
    connection.Listen(GetText());
    EXPECT_TRUE(GetMatchRules().empty());
}

TEST_P(BadInterface, IsNotSubscribedTo)
{
    EXPECT_FALSE(Subscribes(GetText(), "A"));
}

class BadInterfaceOfACall : public Texts
{
};

INSTANTIATE_TEST_SUITE_P(Texts, BadInterfaceOfACall,
                         testing::ValuesIn(WithoutNull(TestSupport::GetBadInterfaces())), GetWhat);

TEST_P(BadInterfaceOfACall, MakesAnEmptyMessage)
{
    EXPECT_FALSE(Message("net.a", "/", GetText(), "A"));
}

class BadMember : public Texts
{
};

INSTANTIATE_TEST_SUITE_P(Texts, BadMember, testing::ValuesIn(TestSupport::GetBadMembers()),
                         GetWhat);

TEST_P(BadMember, MakesAnEmptyMessage)
{
    EXPECT_FALSE(Message("net.a", "/", "net.a", GetText()));
}

TEST_P(BadMember, IsNotSubscribedTo)
{
    EXPECT_FALSE(Subscribes("net.a", GetText()));
}

class BadBusName : public Texts
{
};

INSTANTIATE_TEST_SUITE_P(Texts, BadBusName, testing::ValuesIn(TestSupport::GetBadBusNames()),
                         GetWhat);

TEST_P(BadBusName, IsNotAskedFor)
{
    EXPECT_EQ(connection.Name(GetText()), 0);
}

class BadDestination : public Texts
{
};

INSTANTIATE_TEST_SUITE_P(Texts, BadDestination,
                         testing::ValuesIn(WithoutNull(TestSupport::GetBadBusNames())), GetWhat);

TEST_P(BadDestination, MakesAnEmptyMessage)
{
    EXPECT_FALSE(Message(GetText(), "/", "net.a", "A"));
}

} // namespace Tovra::DBus
