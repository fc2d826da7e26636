#pragma once

#include <string>

class NvErrorCode;

/** An error in words for the person at the screen, lower case and without a closing stop, with the number
 *  that a report should quote: "not a GIF file (code 32)". */
std::string MizerErrorWords(const NvErrorCode& inError);
