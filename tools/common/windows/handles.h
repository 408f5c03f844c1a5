// What the tools' sources for Windows share.
#pragma once

#include <string>

namespace tools {

// Texts of the system, and as the tools have them.
std::string Utf8Of(const std::wstring &wide);
std::wstring WideOf(const std::string &utf8);

// The errno of the system's last error.
int LastErrno();

} // namespace tools
