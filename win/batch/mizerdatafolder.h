#pragma once

#include <cstdio>
#include <functional>
#include <string>

#include "win/texts/pvtexts.h"

/** The folder of the program's own files, and who shows the person that one of them cannot be written. */
struct MizerDataFolder {
    /** Its path, without a closing separator. Called each time one is needed, since the folder may come and
     *  go. */
    std::function<std::string()> mFind;

    /** Shows a message that stays until the person has seen it. */
    std::function<void(const std::string& inText, const char* inCaption)> mComplain;

    std::string MakePath(const char* inName) const;

    /** fopen for the files there. A pipe or a device, which might keep the program waiting for ever, is
     *  refused with EINVAL. */
    static std::FILE* Open(const std::string& inPath, const char* inMode);

    /** Complains that a file cannot be used.
     *  @param inError  a value of errno
     *  @param inWhat   takes the path and the words for the error */
    void ComplainOf(int inError, PvText inWhat, const std::string& inPath, PvText inCaption) const;
};
