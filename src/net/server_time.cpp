// The process-wide count of failed server-time replies.
#include "net/server_time.h"

namespace tolvane::net {

int& serverTimeFailureCount() {
    static int count = 0;  // only the services' thread touches it
    return count;
}

}  // namespace tolvane::net
