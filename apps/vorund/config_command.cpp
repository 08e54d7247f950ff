#include "commands.h"
#include "report.h"
#include "settings_in_force.h"
#include "vorund/rooms/settings.h"

namespace vorund::app {

void runConfig(const Arguments& arguments, Terminal& terminal) {
    printResult(rooms::settingsAsYaml(settingsInForce(arguments.settings, terminal)));
}

}  // namespace vorund::app
