#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Records/AppConfig.h"
#include "CleanerCore/Support/ByteCount.h"
#include "LoftmereApp/Model/Published.h"
#include "LoftmereApp/Model/SidebarItem.h"

#include <map>
#include <optional>
#include <string>

namespace loftmere {

// What every screen needs: the settings, what is running, and what is on show.
struct BasicFields : FieldGroup {
    // Loads the settings. Defined in AppModel.cpp.
    BasicFields(const MainThread& main, Paths home);

    const Paths paths;
    Published<AppConfig> config; // every assignment saves it; a failure to save is dropped
    Published<std::map<std::string, std::string>> ops{main_}; // running operations: key to label
    Published<std::optional<VolumeSpace>> space{main_};       // of the home's volume
    Published<bool> agentInstalled{main_};                    // the background job's property list exists
    Published<bool> showOnboarding{main_};                    // the first-run sheet is up
    Published<SidebarItem> section{main_, SidebarItem::smartCare}; // the screen on show
    Published<std::optional<std::string>> toast{main_};            // the message of the moment
};

} // namespace loftmere
