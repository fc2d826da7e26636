#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "term/options/options.h"
#include "term/text/messages.h"
#include "win/batch/filequeue.h"
#include "win/batch/mizershell.h"

/** A file that the command line asks for. */
struct TermInput {
    std::string mPath;
    std::string mPlace; ///< path below the named folder; for a file or a pattern, the file's name
};

struct TermInputs {
    std::vector<TermInput> mFiles;
    std::unique_ptr<FileQueue> mQueue; ///< the same files, ready for the batch
    std::vector<std::string> mFolders; ///< those that were named
};

/** What is to be asked before any file is touched: two names of which the second does not exist are how other
 *  programs write one file to another.
 *  @return what is wrong, or nothing */
std::string TermCheckNames(const TermSettings& inSettings);

/** What the names on the command line and in the file of names stand for, in their order, each file once.
 *  Names that lead nowhere, or to a file named before, are reported.
 *
 *  @param inListener  receives each name that leads nowhere; borrowed, or null */
TermInputs TermListInputs(const TermSettings& inSettings, TermMessages& ioMessages,
                          MizerListener* inListener = nullptr);

/** Reports skipped files. A folder may hold a thousand of them: except in verbose runs, only those that were
 *  named themselves get a line. */
class TermPassedOver {
public:
    /** @param ioMessages  borrowed */
    TermPassedOver(const TermSettings& inSettings, TermMessages& ioMessages);

    void Report(const std::string& inPath, const std::string& inWords);

    /** The same of what is worth a line in verbose runs only, whoever named the file. */
    void ReportInDetail(const std::string& inPath, const std::string& inWords);

private:
    TermMessages& mMessages;
    bool mVerbose;
    std::set<std::string> mTypedNames; // files that the user named one by one
};
