// parvigif-manual: prints what is made from the program's table of options: the man page, the shells'
// completions, the user guide's list.

#include <cstdio>
#include <string>
#include <string_view>

#include "term/manual/completions.h"
#include "term/manual/manpage.h"
#include "term/manual/optionlist.h"

namespace {

struct Product {
    const char* mName;
    std::string (*mMake)();
};

constexpr Product km_Products[] = {
    {"man", TermManPage},         {"bash", TermBashCompletion}, {"zsh", TermZshCompletion},
    {"fish", TermFishCompletion}, {"options", TermOptionList},
};

} // namespace

int main(int inCount, char** inArguments) {
    const std::string_view wanted = inCount == 2 ? inArguments[1] : "";
    for (const Product& product : km_Products) {
        if (wanted != product.mName)
            continue;
        const std::string text = product.mMake();
        const bool isWritten = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
        return isWritten && std::fflush(stdout) == 0 ? 0 : 1;
    }
    std::fputs("usage: parvigif-manual man|bash|zsh|fish|options\n", stderr);
    return 2;
}
