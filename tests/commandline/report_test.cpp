// The page that --report writes: there whole or not at all, over nothing but an older one, with what fits in
// it.

#include "term/text/utf8.h"
#include "tests/support/programtest.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
namespace fs = std::filesystem;

class Report : public ProgramTest {
protected:
    Report() { DrawSamples(); }
};

TEST_F(Report, APathThatCannotBeWrittenIsReportedBeforeAnyFileIsTouched) {
    Write("page.html", "<!DOCTYPE html>\n<p>Somebody's own.</p>\n");
    const std::string exists = "the file exists already (code 31)";
    for (const auto& [path, text] : std::vector<std::pair<std::string, std::string>>{
             {"none/report.html", "no such file or folder (code 10)"},
             {"page.html", exists},
             {".", exists},
         })
        ExpectRefusal({"--report", path, "ball.gif"}, path + ": no report can be written there: " + text);
}

TEST_F(Report, PicturesAreThoseOfBeforeAndAfterTheRun) {
    const std::string ball = Read("ball.gif");
    fs::rename(mFolder / "icon.gif", mFolder / "\"\xff\"<i>.gif");
    EXPECT_EQ(mRunner.Run({"--report", "report.html", "--dry-run", "ball.gif"}).mStatus, 0);
    EXPECT_EQ(Read("ball.gif"), ball);
    EXPECT_THAT(Read("report.html"), HasSubstr("class=\"before\">" + TermBase64(ball) + "</script>"));

    EXPECT_EQ(mRunner.Run({"--report", "report.html", "ball.gif", "\"\xff\"<i>.gif"}).mErr, "")
        << "an older report may be replaced";
    const std::string page = Read("report.html");
    EXPECT_THAT(page, StartsWith("<!DOCTYPE html>\n"));
    EXPECT_THAT(page, testing::EndsWith("</html>\n"));
    EXPECT_THAT(page, HasSubstr("class=\"before\">" + TermBase64(ball) + "</script>"));
    EXPECT_THAT(page, HasSubstr("class=\"after\">" + TermBase64(Read("ball.gif")) + "</script>"));
    EXPECT_THAT(page, HasSubstr("<bdi>&#34;\\xff&#34;&#60;i&#62;.gif</bdi>"));
    for (const auto& entry : fs::directory_iterator(mFolder.GetPath()))
        EXPECT_NE(entry.path().extension(), ".tmp");
}

TEST_F(Report, WhatDoesNotFitIsLeftOutAndSaidSo) {
    Write("large.gif", Read("ball.gif") + std::string(2 << 20, '\0')); // behind the trailer
    mRunner.Run({"--report=report.html", "--report-limit=1", "large.gif", "icon.gif"});
    const std::string page = Read("report.html");
    EXPECT_THAT(page, HasSubstr("The pictures of 1 file are left out"));
    EXPECT_THAT(page, HasSubstr("class=\"after\">" + TermBase64(Read("icon.gif")) + "</script>"));
    EXPECT_LT(page.size(), 1u << 20);
    mRunner.Run({"--report=report.html", "--report-limit=0", "none.gif", "tiles.gif"});
    EXPECT_THAT(Read("report.html"), Not(HasSubstr("class=\"before\">")));
    EXPECT_THAT(Read("report.html"), HasSubstr("<bdi>none.gif</bdi><small>no such file or folder (code 10)"));
}

} // namespace
