#include "term/listener.h"

#include "term/messages.h"
#include "win/outcomewords.h"

std::string TermOutcomeWords(const MizerFileResult& inResult) {
    return TermPrintable(MizerOutcomeWords(inResult));
}
