#include <gtest/gtest.h>

#include <functional>

#include "support/log_reader.h"
#include "support/sim_service_fixture.h"

namespace {

class SilentSlots : public LoggedInSimServiceTest {};

// Slots that send nothing, with every line each writes to tolvane.log: no banner where the
// operation has none, and no line beyond its banner for a refused push line.
TEST_F(SilentSlots, WriteOnlyTheirOwnLinesAndSendNothing) {
    struct Case {
        const char* what;
        std::function<int32_t()> call;
        int32_t result;
        QStringList lines;
    };
    const Case cases[] = {
        {"slot 14, a push line the platform never offered",
         [&] { return service().open_live_room("rtmp://elsewhere.example/live/x"); },
         1,
         {"call function: VxNetServiceImp::open_live_room -----------------"}},
        {"slot 19, unsupported by the login library",
         [&] { return service().loginRequestCall("event", "detail", 3); },
         -1,
         {}},
        {"slot 36",
         [&] {
             service().logout();
             return 0;
         },
         0,
         {"[msg] logout begin.", "[msg] logout end."}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const std::size_t sent = sim().http().requestLog().size();
        const int logged = readLogMessages(tolvane::log::kMainLog).size();
        EXPECT_EQ(c.call(), c.result);
        EXPECT_EQ(readLogMessages(tolvane::log::kMainLog).mid(logged), c.lines);
        EXPECT_EQ(sim().http().requestLog().size(), sent);
    }
}

}  // namespace
