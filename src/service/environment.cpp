#include "service/environment.h"

#include "tolvane_config/default_data.h"

namespace tolvane {

int readEnvironment() {
    return config::readDefaultData().environment;
}

}  // namespace tolvane
