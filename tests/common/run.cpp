#include "common/run.h"

#include "driver/batch.h"
#include "expressions/expr_eval.h"
#include "expressions/expr_lexer.h"
#include "expressions/var_store.h"
#include "platform/script_names.h"
#include "rules/rule_table.h"
#include "source/src_stream.h"
#include "statements/arg_fetcher.h"
#include "statements/labels.h"
#include "support/output.h"

#include <gtest/gtest.h>

#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

std::string read_file(const fs::path &path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

void write_file(const fs::path &path, const std::string &bytes)
{
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    ASSERT_TRUE(file.good()) << path;
}

bool is_script(const fs::path &path)
{
    return path.extension() == ".mrl" && name_kind_of(path.c_str()) == NAME_SCRIPT;
}

std::string times(size_t count, const std::string &text)
{
    std::string result;
    for (size_t i = 0; i < count; i++)
        result += text;
    return result;
}

const double *evaluate(const std::string &text)
{
    std::string bytes = text + std::string(lex_slack, 0);
    return eval_expr(bytes.data(), text.size());
}

fs::path fresh_folder(const std::string &name)
{
    fs::path folder = fs::path(TEST_SCRATCH_DIR) / name;
    fs::remove_all(folder);
    fs::create_directories(folder);
    return folder;
}

static const line_directive_state line_directives_at_start = line_directives;

void reset_run()
{
    rules_run = {};
    line_directives = line_directives_at_start;
    key_load = nullptr;
    expr_error = nullptr;
    src_read_limit = SIZE_MAX;
}

int open_files()
{
    return static_cast<int>(std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

run_result run_converter(const fs::path &folder, const std::vector<std::string> &paths)
{
    fs::path before = fs::current_path();
    fs::current_path(folder);
    std::vector<char *> arguments{const_cast<char *>("murlconv")};
    for (const std::string &path : paths)
        arguments.push_back(const_cast<char *>(path.c_str()));
    testing::internal::CaptureStdout();
    run_result result;
    result.status = conv_main(static_cast<int>(arguments.size()), arguments.data());
    result.printed = testing::internal::GetCapturedStdout();
    fs::current_path(before);
    return result;
}

std::string converted(const std::string &script, void (*key)(const char *, key_record *), size_t read_limit)
{
    fs::path folder = fs::path(TEST_SCRATCH_DIR) / ("converted_" + std::to_string(getpid()));
    fs::create_directories(folder);
    write_file(folder / "script.mrl", script);
    reset_run();
    key_load = key;
    src_read_limit = read_limit;
    run_converter(folder, {"script.mrl"});
    key_load = nullptr;
    src_read_limit = SIZE_MAX;
    std::string output = read_file(folder / "script_conv.mrl");
    fs::remove_all(folder);
    return output;
}

source_stream::source_stream(const std::string &text)
    : stream(&opened), file(tmpfile()), opened(plat_file{fileno(file)})
{
    fwrite(text.data(), 1, text.size(), file);
    rewind(file);
}

source_stream::~source_stream()
{
    fclose(file);
}

output_capture::output_capture() : file(tmpfile())
{
    out_open(plat_file{dup(fileno(file))});
}

std::string output_capture::text()
{
    if (open)
        out_close();
    open = false;
    rewind(file);
    std::string text;
    for (int c; (c = getc(file)) != EOF;)
        text += static_cast<char>(c);
    return text;
}

output_capture::~output_capture()
{
    (void)text();
    fclose(file);
}

void file_objects()
{
    if (Vbuf != nullptr)
        pools_free();
    ASSERT_EQ(pools_init(), 0);
}

script_source::script_source(const std::string &text) : source_stream(text)
{
    file_objects();
    src_open("test", stream);
}
