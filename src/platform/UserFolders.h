#pragma once

#include <zaltag/base/ZALText.h>

#include <string>
#include <vector>

// The user's folders as the XDG base and user directories give them, by the host's environment.
namespace zal {

/// HOME, or null when it is no absolute path.
ZALNullableString homeFolder();

/// XDG_CONFIG_HOME, or `~/.config`; null without either.
ZALNullableString configurationFolder();

/// The folder that `user-dirs.dirs` names for documents, else `~/Documents`; nothing without a home.
std::vector<std::string> documentsFolders();

}  // namespace zal
