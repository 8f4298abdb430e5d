// The merge of what was written, what was edited and what is written now.
#include "report/memory/line_diff.h"
#include "report/memory/merge.h"
#include "report/memory/text_lines.h"
#include "report/show.h"

#include "common/run.h"

#include <gtest/gtest.h>

#include <stdlib.h>
#include <sys/wait.h>
#include <time.h>

#include <algorithm>
#include <random>

namespace fs = std::filesystem;

struct triple {
    std::string last, mine, fresh;
};

// Scripts' outputs and edits of them, made so that lines repeat, edits touch, and ends are edited.
class triple_maker {
public:
    explicit triple_maker(unsigned seed) : random(seed) {}

    triple make()
    {
        letters = std::vector<size_t>{2, 4, 9, 60}[below(4)];
        std::vector<std::string> last = lines(below(std::vector<size_t>{6, 30, 30, 30, 200}[below(5)]));
        std::vector<std::string> mine = edited(last), fresh = edited(last);
        if (below(6) == 0)
            fresh = edited(mine); // some edits are made on both sides
        return {joined(last), joined(mine), joined(fresh)};
    }

    size_t below(size_t limit)
    {
        return random() % limit;
    }

private:
    std::vector<std::string> lines(size_t count)
    {
        std::vector<std::string> made;
        for (size_t i = 0; i < count; i++) {
            size_t letter = below(letters + 1);
            made.push_back(letter == 0 ? "" : "LINE " + std::to_string(letter));
        }
        return made;
    }

    // A position in a text, its ends more often than their share.
    size_t position(size_t size)
    {
        size_t kind = below(8);
        return kind == 0 ? 0 : kind == 1 ? size : below(size + 1);
    }

    std::vector<std::string> edited(std::vector<std::string> text)
    {
        for (size_t edits = below(4 + text.size() / 20); edits > 0; edits--) {
            size_t at = position(text.size());
            size_t count = std::min(below(4), text.size() - at);
            auto place = text.begin() + static_cast<ptrdiff_t>(at);
            std::vector<std::string> run(place, place + static_cast<ptrdiff_t>(count));
            bool deletes = below(2) == 0;
            if (deletes)
                text.erase(place, place + static_cast<ptrdiff_t>(count));
            if (!deletes || below(2) == 0) {
                std::vector<std::string> added = below(3) == 0 ? run : lines(1 + below(3));
                size_t to = below(3) == 0 ? position(text.size()) : at;
                text.insert(text.begin() + static_cast<ptrdiff_t>(to), added.begin(), added.end());
            }
        }
        return text;
    }

    static std::string joined(const std::vector<std::string> &lines)
    {
        std::string text;
        for (const std::string &line : lines)
            text += line + "\n";
        return text;
    }

    std::mt19937 random;
    size_t letters = 0;
};

struct git_result {
    bool conflict;
    std::string text;
};

static git_result merged_by_git(const fs::path &folder, const triple &texts)
{
    write_file(folder / "last", texts.last);
    write_file(folder / "mine", texts.mine);
    write_file(folder / "fresh", texts.fresh);
    std::string command =
        "cd '" + folder.string() +
        "' && GIT_CONFIG_NOSYSTEM=1 HOME=/nonexistent git merge-file -p mine last fresh >merged";
    int status = system(command.c_str());
    status = WIFEXITED(status) ? WEXITSTATUS(status) : 255;
    EXPECT_LT(status, 127) << "git merge-file could not be run";
    return {status != 0, read_file(folder / "merged")};
}

// MERGE_TRIPLES in the environment is another number of triples, for a longer run.
TEST(merge, has_the_rule_of_git)
{
    fs::path folder = fresh_folder("merge");
    ASSERT_EQ(system("git --version >/dev/null"), 0) << "this test needs git";
    const char *wanted = getenv("MERGE_TRIPLES");
    const int triples = wanted != nullptr ? atoi(wanted) : 150;
    int conflicts = 0, same = 0, other_text = 0, only_git = 0, only_ours = 0;
    triple_maker maker(17);
    for (int i = 0; i < triples; i++) {
        triple texts = maker.make();
        git_result git = merged_by_git(folder, texts);
        merge_result ours = merge_texts(texts.last, texts.mine, texts.fresh);
        auto show = [&](const char *what) {
            printf("%s, triple %d\n--- last\n%s--- mine\n%s--- fresh\n%s--- git\n%s--- ours\n%s", what, i,
                   texts.last.c_str(), texts.mine.c_str(), texts.fresh.c_str(), git.text.c_str(),
                   ours.text.c_str());
        };
        bool conflict = !ours.conflicts.empty();
        if (git.conflict && conflict)
            conflicts++;
        else if (git.conflict)
            only_git++, show("git has a conflict");
        else if (conflict)
            only_ours++, show("git merges");
        else if (git.text == ours.text)
            same++;
        else
            other_text++, show("another text");
    }
    printf(
        "of %d triples %d conflicts in both, %d merged the same, %d merged to another text, conflicts in git "
        "alone %d, in ours alone %d\n",
        triples, conflicts, same, other_text, only_git, only_ours);
    EXPECT_EQ(only_git, 0);
    EXPECT_EQ(other_text, 0);
    EXPECT_EQ(only_ours, 0);
    EXPECT_GT(conflicts, triples / 10);
    EXPECT_GT(same, triples / 10);
}

TEST(merge, keeps_the_spelling_of_the_edited_output)
{
    static const char conflict[] = "conflict";
    static const std::string bom = "\xEF\xBB\xBF";
    const struct {
        std::string last, mine, fresh, want;
    } cases[] = {
        {"", "", "", ""},
        {"", "", "a\r\nb", "a\r\nb"},
        {"a\n", "a\n", "", ""},
        {"a\n", "", "", ""},
        {"a\nb\nc\n", "a\nb\nc\n", "a\nc\n", "a\nc\n"},
        // Line ends: most of mine's count, and its own lines keep theirs.
        {"a\nb\nc\n", "a\r\nb\r\nc\r\n", "a\nb\nx\nc\n", "a\r\nb\r\nx\r\nc\r\n"},
        {"a\r\nb\r\nc\r\n", "a\nb\nc\n", "a\r\nx\r\nc\r\n", "a\nx\nc\n"},
        {"a\nb\nc\n", "a\nb\r\nc\r\n", "x\nb\nc\n", "x\r\nb\r\nc\r\n"},
        {"a\nb\n", "a\r\nb\n", "a\nb\nc\r\n", "a\r\nb\nc\n"},
        // White space at the ends of a line is no change on either side.
        {"a \nb\nc\n", "  a\n\tb\nc\n", "a\n b  \nx\t\n", "  a\n\tb\nx\t\n"},
        {"a\nb\nc\n", "a\n  b\nc\n", "a\nc\n", "a\nc\n"},
        {"a\nb c\n", "a\nb  c\n", "x\nb c\n", conflict},
        {"a\n\nb\n", "a\n \t\nb\n", "a\n\nc\n", "a\n \t\nc\n"},
        // The byte order mark is mine's.
        {"a\n", bom + "a\n", "b\n", bom + "b\n"},
        {bom + "a\nb\n", "a\nb\n", bom + "a\nc\n", "a\nc\n"},
        {"a\nb\n", bom + "a\nb\n", "b\n", bom + "b\n"},
        {"a\n", "a\n" + bom, "a\n", "a\n" + bom},
        // So is the end of the last line; a blank last line can't do without.
        {"a\nb\n", "a\nb", "a\nb\n", "a\nb"},
        {"a\nb\n", "a\nb", "x\nb\n", "x\nb"},
        {"a\nb\n", "a\nb", "a\nb\nc\n", "a\nb\nc"},
        {"a\nb\n", "a\r\nb", "a\nb\nc\nd\n", "a\r\nb\r\nc\r\nd"},
        {"a\nb", "a\nb\n", "a\nc", "a\nc\n"},
        {"a", "a", "a\nb\r\n", "a\nb"},
        {"a\n\nb\n", "a\r\n\r\nb", "a\n\n", "a\r\n\r\n"},
        {"a\nb\n", "a\nb", "a\n", "a"},
        {"a\n", "a\n", "b", "b\n"},
        // A CR within a line counts, and so does every other byte.
        {"a\rb\nc\n", "a\rb\nc\n", "ab\nc\n", "ab\nc\n"},
        {std::string("a\0b\n\xFF\n", 6), std::string("a\0b\n\xFF\n", 6), std::string("a\0c\n\xFF\n", 6),
         std::string("a\0c\n\xFF\n", 6)},
        // Changes that touch, and the same change on both sides.
        {"a\nb\nc\n", "x\nb\nc\n", "a\ny\nc\n", conflict},
        {"a\nb\nc\n", "x\nb\nc\n", "a\nb\ny\n", "x\nb\ny\n"},
        {"a\nb\nc\n", "a\nc\n", "a\nb2\nc\n", conflict},
        {"a\nb\nc\n", "a\n  x\nc\n", "a\nx\ny\n", conflict},
        {"a\nb\nc\n", "a\n  x\r\nc\n", "a\nx \nc\n", "a\n  x\r\nc\n"},
        {"a\n", "a\nb\n", "a\nc\n", conflict},
        // A run stays opposite a change of the other text, though it could go further down.
        {"\n\n\n", "LINE 2\n\n", "\n\n\n\n", "LINE 2\n\n\n"},
        {"LINE 1\n\n", "\n", "\n\n", conflict},
    };
    for (const auto &texts : cases) {
        merge_result merged = merge_texts(texts.last, texts.mine, texts.fresh);
        EXPECT_EQ(merged.conflicts.empty() ? merged.text : conflict, texts.want) << "last:\n"
                                                                                 << texts.last << "mine:\n"
                                                                                 << texts.mine << "fresh:\n"
                                                                                 << texts.fresh;
    }
}

TEST(merge, reports_conflicts_and_what_it_kept)
{
    merge_result merged = merge_texts("a\nb\nc\nd\ne\n", "a\r\nmine\r\n\r\nc\r\nd\r\n", "0\na\nb\nc\nd\ne\n");
    ASSERT_EQ(merged.kept.size(), 2u);
    EXPECT_EQ(merged.taken, 1u);
    EXPECT_EQ(merged.text, "0\r\na\r\nmine\r\n\r\nc\r\nd\r\n");
    EXPECT_EQ(merged.kept[0].line, 3u);
    EXPECT_EQ(merged.kept[0].last, "b\n");
    EXPECT_EQ(merged.kept[0].mine, "mine\r\n\r\n");
    EXPECT_EQ(merged.kept[1].line, 7u) << "deleted lines: where they would be";
    EXPECT_EQ(merged.kept[1].last, "e\n");
    EXPECT_EQ(merged.kept[1].mine, "");

    merged = merge_texts("a\nb\nc\nd\ne\n", "0\na\nmine\nc\n  d\n", "a\nfresh\nc\nd\nE\n");
    ASSERT_EQ(merged.conflicts.size(), 2u);
    EXPECT_EQ(merged.conflicts[0].line, 3u);
    EXPECT_EQ(merged.conflicts[0].last, "b\n");
    EXPECT_EQ(merged.conflicts[0].mine, "mine\n");
    EXPECT_EQ(merged.conflicts[0].fresh, "fresh\n");
    EXPECT_EQ(merged.conflicts[1].line, 6u);
    EXPECT_EQ(merged.conflicts[1].last, "e\n");
    EXPECT_EQ(merged.conflicts[1].mine, "");
    EXPECT_EQ(merged.conflicts[1].fresh, "E\n");
    EXPECT_EQ(merged.text, "");
}

// The text as an editor may have left it: other line ends, blanks at both ends of lines, a byte order mark.
static std::string respelt(triple_maker *maker, const std::string &text, const std::string &line_end)
{
    static const char *const blanks[] = {"", "", " ", "\t", "   "};
    std::string result = maker->below(3) == 0 ? "\xEF\xBB\xBF" : "";
    std::string_view rest = text, line;
    while (line_take(&rest, &line))
        result +=
            blanks[maker->below(5)] + std::string(text_trimmed(line)) + blanks[maker->below(5)] + line_end;
    if (maker->below(3) == 0)
        result.resize(result.find_last_not_of("\r\n") + 1);
    return result;
}

TEST(merge, comes_to_the_same_lines_however_they_are_spelt)
{
    triple_maker maker(18);
    int merges = 0;
    for (int i = 0; i < 2000; i++) {
        triple plain = maker.make();
        for (std::string *text : {&plain.last, &plain.mine, &plain.fresh})
            *text += "last\n";
        std::string line_end = i % 2 == 0 ? "\r\n" : "\n";
        triple spelt{respelt(&maker, plain.last, "\n"), respelt(&maker, plain.mine, line_end),
                     respelt(&maker, plain.fresh, i % 3 == 0 ? "\r\n" : "\n")};
        merge_result want = merge_texts(plain.last, plain.mine, plain.fresh);
        merge_result merged = merge_texts(spelt.last, spelt.mine, spelt.fresh);
        ASSERT_EQ(merged.conflicts.size(), want.conflicts.size()) << i;
        if (!want.conflicts.empty())
            continue;
        merges++;
        EXPECT_TRUE(same_text(merged.text, want.text)) << merged.text << "---\n" << want.text;
        EXPECT_EQ(text_body(merged.text).size() != merged.text.size(),
                  text_body(spelt.mine).size() != spelt.mine.size());
        EXPECT_TRUE(want.taken > 0 || merged.text == spelt.mine);
        if (spelt.mine.find('\n') == std::string::npos)
            continue; // the line ends are those of fresh
        std::string_view rest = text_body(merged.text), line;
        while (line_take(&rest, &line)) {
            std::string_view end = line.substr(line.find_last_not_of("\r\n") + 1);
            EXPECT_TRUE(end == line_end || (rest.empty() && end.empty())) << merged.text;
        }
    }
    EXPECT_GT(merges, 500);
}

// What the changes make of before.
static std::vector<uint32_t> changed_by(const std::vector<line_change> &changes,
                                        const std::vector<uint32_t> &before,
                                        const std::vector<uint32_t> &after)
{
    std::vector<uint32_t> result;
    size_t at = 0;
    auto copy = [&](const std::vector<uint32_t> &from, size_t first, size_t end) {
        result.insert(result.end(), from.begin() + static_cast<ptrdiff_t>(first),
                      from.begin() + static_cast<ptrdiff_t>(end));
    };
    for (const line_change &change : changes) {
        copy(before, at, change.before_at);
        EXPECT_EQ(result.size(), change.after_at);
        copy(after, change.after_at, change.after_at + change.after_count);
        at = change.before_at + change.before_count;
    }
    copy(before, at, before.size());
    return result;
}

// Texts of many lines that differ in all possible ways: the time grows with their lines, not with their
// square, which would be minutes.
TEST(merge, takes_long_texts_in_little_time)
{
    constexpr uint32_t count = 40000;
    std::mt19937 random(19);
    std::vector<uint32_t> ordered(count), reversed, shuffled, few(count), few_too(count), periodic(count),
        worn;
    for (uint32_t i = 0; i < count; i++) {
        ordered[i] = i;
        few[i] = static_cast<uint32_t>(random() % 3);
        few_too[i] = static_cast<uint32_t>(random() % 3);
        periodic[i] = i % 3;
        if (random() % 20 != 0)
            worn.push_back(i % 3);
    }
    reversed.assign(ordered.rbegin(), ordered.rend());
    shuffled = ordered;
    std::shuffle(shuffled.begin(), shuffled.end(), random);
    clock_t start = clock();
    for (const auto *before : {&ordered, &few, &worn})
        for (const auto *after : {&ordered, &reversed, &shuffled, &few_too, &periodic, &worn})
            EXPECT_TRUE(changed_by(line_diff(*before, *after), *before, *after) == *after);
    EXPECT_LT(clock() - start, 20 * CLOCKS_PER_SEC);

    const std::string too_many(merge_lines_max, '\n');
    EXPECT_EQ(merge_texts("a\n", "b\n", too_many).conflicts.size(), 1u);
    EXPECT_EQ(merge_texts("a\n", "a\n", too_many.substr(1)).taken, 1u);
}
