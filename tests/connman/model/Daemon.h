#pragma once

#include "tests/connman/model/History.h"
#include "tests/connman/model/Traffic.h"

namespace Tovra::ConnManModel
{

/** The daemon's own lists, and what it sends as events come to pass. */
class Daemon
{
public:
    Traffic Play(const Event& event);

private:
    struct Item {
        std::string sPath;
        Look look;
        bool bAnnounced = false; ///< told in full by a signal
    };
    using Items = std::vector<Item>;
    using Values = std::vector<TestSupport::WireValue>;

    Traffic PlayServices(const Event& event);
    Traffic PlayTechnologies(const Event& event);
    Traffic PlayProperty(const Event& event);
    Traffic AnnounceServices(const Event& event);
    Traffic ChangeService(const Event& event);
    Values ListServices(const Event& event) const;
    Values ListTechnologies(const Event& event) const;

    static void Come(Items& vecItems, const std::string& sPath, const Event& event);
    static void Go(Items& vecItems, const Event& event);

    Items vecServices;
    Items vecTechnologies;
};

} // namespace Tovra::ConnManModel
