#pragma once

#include <string>

/** What tests ask of the system, one body per platform. */

/** Makes a fresh folder below the temporary one. @return its path */
std::string MakeTestFolder();

/** Sets an environment variable of this process; null removes it. */
void SetTestVariable(const char* inName, const char* inValue);
