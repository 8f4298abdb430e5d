#include "report/writers/guide.h"

#include "report/item.h"
#include "report/show.h"

#include <algorithm>

// Where the text of a section ends: at the next heading, or at the anchor above it.
static size_t section_end(std::string_view text)
{
    return std::min({text.find("\n## "), text.find("\n### "), text.find("\n<a id="), text.size()});
}

// The texts under a guide's headings of a level ("## "), by heading, of those that are wanted. A heading may
// name several things, with commas.
static std::map<std::string, std::string> guide_sections(std::string_view guide, const std::string &level,
                                                         const std::set<std::string> &wanted)
{
    std::map<std::string, std::string> sections;
    std::string start = "\n" + level;
    for (size_t at = guide.find(start); at != std::string_view::npos; at = guide.find(start)) {
        guide.remove_prefix(at + start.size());
        size_t title_end = std::min(guide.find('\n'), guide.size());
        std::string_view titles = guide.substr(0, title_end);
        std::string_view text = guide.substr(title_end);
        while (!titles.empty()) {
            size_t end = std::min(titles.find(", "), titles.size());
            std::string title(titles.substr(0, end));
            if (wanted.count(title) != 0)
                sections[title] = text_trimmed(text.substr(0, section_end(text)));
            titles.remove_prefix(std::min(end + 2, titles.size()));
        }
    }
    return sections;
}

std::map<std::string, std::string> guide_kinds()
{
    std::set<std::string> words;
    for (const kind_row &row : kind_table)
        words.insert(row.word);
    return guide_sections(finishing_md, "## ", words);
}

std::map<std::string, std::string> guide_commands(const std::set<std::string> &wanted)
{
    return guide_sections(commands_md, "### ", wanted);
}
