// One life of a script: converted, finished by hand, fixed, merged, renamed and deleted.
#include "run_report.h"

#include <stdlib.h>

namespace fs = std::filesystem;

TEST_F(report_test, one_life_of_a_script)
{
    // It is converted by murlconv, and a report knows the output without a memory.
    write("part.mrl",
          "REM a part\nx = 3\nLINE 0,0,0,x,1,0\nLINDIM 0,0,0,w,5,1,2\nREM middle\nCLS\n:end\nLEVELS 1,4\n"
          "REM last\n");
    setenv("PROGRAM", TEST_CONVERTER, 1);
    ASSERT_EQ(system(("cd '" + folder.string() + "' && \"$PROGRAM\" part.mrl >/dev/null").c_str()), 0);
    report_result result = run(".");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(report_of(".")["output"], "same");
    EXPECT_EQ(names(), "part.mrl part_conv.mrl");

    // Somebody finishes it by hand. What was written isn't remembered, so that it counts only once it is
    // adopted.
    std::string text = read("part_conv.mrl");
    size_t tip = text.find("\n// CONVERSION TIP") + 1, middle = text.find("REM middle");
    write("part_conv.mrl", text.replace(tip, middle - tip, "LINDIM 1, 2, 3\n"));
    edit("part_conv.mrl", "REM **** WARNING: CLS has NOT been implemented\nREM CLS\n", "VIEWCLEAR\n");
    result = run("--convert .");
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(has(result.err, "kept ./part_conv.mrl: it isn't known")) << result.err;
    EXPECT_TRUE(has(result.out, "byhand LINDIM")) << result.out;
    EXPECT_TRUE(has(result.out, "[changed?]"));
    EXPECT_EQ(run("--adopt .").status, 1) << "LEVELS is open";
    EXPECT_EQ(report_of(".")["output"], "edited");
    EXPECT_TRUE(has(run(".").out, "byhand LINDIM: the new form is a comment: 0, 0, 0, w, 5, 1, 2 [changed]"));

    // The script is fixed elsewhere: the conversion takes it up beside the edits.
    edit("part.mrl", "REM last\n", "REM last\nPOINT 1,2,3\n");
    EXPECT_EQ(report_of(".")["output"], "behind");
    result = run("--convert .");
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(has(result.err, "merged 1 change into ./part_conv.mrl")) << result.err;
    EXPECT_TRUE(has(read("part_conv.mrl"), "VIEWCLEAR\n"));
    EXPECT_TRUE(has(read("part_conv.mrl"), "POINT 1, 2, 3"));

    // Fixed where it was edited, it is a conflict, which somebody resolves.
    edit("part.mrl", "CLS", "BREAD 1,f,v");
    result = run("--convert .");
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(has(result.err, "conflict\n  yours: VIEWCLEAR\n")) << result.err;
    EXPECT_TRUE(has(read(".murlreport/part_conv.mrl.new"), "BREAD"));
    EXPECT_EQ(report_of(".")["output"], "behind");
    edit("part_conv.mrl", "VIEWCLEAR\n", "READFILE 1, f, v\n");
    result = run("--adopt .");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(report_of(".")["output"], "edited");
    EXPECT_EQ(names(".murlreport"), "part_conv.mrl.last written.csv");

    // What is left is accepted.
    result = run("--accept --command levels --reason 'not used' .");
    EXPECT_EQ(result.status, 0) << result.out << result.err;
    EXPECT_TRUE(has(run(".").out, "1 has nothing left to do"));
    const std::string finished = read("part_conv.mrl");

    // It is renamed: nothing is lost in silence, and its memory goes along if it is renamed too.
    fs::rename(folder / "part.mrl", folder / "piece.mrl");
    result = run("--convert --quiet .");
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(has(result.err, "./part_conv.mrl is an output whose script is gone\n")) << result.err;
    EXPECT_TRUE(has(result.err, "what was accepted of part.mrl matches nothing any more")) << result.err;
    fs::rename(folder / "part_conv.mrl", folder / "piece_conv.mrl");
    fs::rename(folder / ".murlreport/part_conv.mrl.last", folder / ".murlreport/piece_conv.mrl.last");
    EXPECT_EQ(report_of(".")["output"], "edited");
    result = run("--accept --command levels --prune .");
    EXPECT_EQ(result.status, 0) << result.out << result.err;
    EXPECT_TRUE(has(result.err, "forgot ./part_conv.mrl, whose script is gone")) << result.err;
    EXPECT_EQ(read("piece_conv.mrl"), finished);
    EXPECT_FALSE(has(read(".murlreport/accepted.csv"), "part.mrl"));

    // It is deleted with its output, and forgotten.
    write("other.mrl", "REM x\n");
    fs::remove(folder / "piece.mrl");
    EXPECT_EQ(run("--convert .").status, 1) << "its output is still there";
    fs::remove(folder / "piece_conv.mrl");
    result = run("--prune .");
    EXPECT_EQ(result.status, 0) << result.out << result.err;
    EXPECT_EQ(names(".murlreport"), "accepted.csv other_conv.mrl.last written.csv");
    EXPECT_EQ(run(".").err, "");
}
