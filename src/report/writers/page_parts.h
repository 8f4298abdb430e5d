// Texts that are files in the source tree, made a part of the program at build time.
#pragma once

extern const char page_html[];   // src/report/page: the whole page but for its data
extern const char commands_md[]; // docs
extern const char finishing_md[];
