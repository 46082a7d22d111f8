#pragma once

#include "simulator/Value.h"

#include <chrono>
#include <string>
#include <vector>

namespace Tovra::Simulator
{

/** A method call as it came in. */
struct Call {
    std::string sSender;
    std::string sPath;
    std::string sInterface; ///< empty if the call carries none
    std::string sMember;
    Arguments arguments;
    bool bNoReply = false;
};

/** What a call is answered with: values, or an error. */
struct Reply {
    Arguments arguments;
    std::string sError; ///< not empty: an error of this name
    std::string sErrorMessage;

    bool IsError() const { return !sError.empty(); }
};

/** Which calls a rule is for: an empty text stands for any. */
struct CallPattern {
    std::string sMember;
    std::string sPath;
    std::string sInterface;
    std::string sSender;

    bool Matches(const Call& call) const;
};

/** What is done with a call instead of the usual. */
struct Behaviour {
    enum class Action {
        AsUsual, ///< the usual answer, perhaps late
        Answer,  ///< `reply`, and nothing else happens
        Silence, ///< no answer ever, and nothing else happens
    };

    Action action = Action::AsUsual;
    Reply reply;
    std::chrono::milliseconds delay{0};
    bool bHold = false;  ///< the answer waits until it is released
    unsigned nTimes = 0; ///< for so many calls; 0: for all

    static Behaviour AnswerWith(Arguments arguments);
    static Behaviour Fail(const std::string& sError, const std::string& sMessage = "as told");
    static Behaviour StaySilent();
    static Behaviour Delay(std::chrono::milliseconds delay);
    static Behaviour Hold();
};

struct Rule {
    CallPattern pattern;
    Behaviour behaviour;
};

/** The rules in force; of those that match a call, the latest one applies. */
class Rules
{
public:
    void Add(Rule rule) { vecRules.push_back(std::move(rule)); }
    void Clear() { vecRules.clear(); }

    /** What is to be done with the call. Counts it. */
    Behaviour Take(const Call& call);

private:
    std::vector<Rule> vecRules;
};

/** Throws Problem. */
Rule ReadRule(const Json& fields, const std::string& sWhere);

/** From the fields "signature" and "args"; without them, no arguments. Throws Problem. */
class Fields;
Arguments ReadArguments(Fields& fields);

} // namespace Tovra::Simulator
