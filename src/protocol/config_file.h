// The settings file.
#pragma once

#include <string_view>

namespace quelmar {

// Reads "quelmar.ini" in the working directory into `settings` and returns whether there is one. Without it
// nothing changes; lines that are not understood are passed over; nothing is ever reported.
bool read_config_file();

// The same for "quelmar/quelmar.ini" in the folder of the user's settings: $XDG_CONFIG_HOME where it is an
// absolute path, otherwise ~/.config.
bool read_users_config_file();

// Takes one line of the file (its line end included or not) into `settings`. True when it begins with a key,
// whether or not its value could be read.
bool apply_config_line(std::string_view line);

}  // namespace quelmar
