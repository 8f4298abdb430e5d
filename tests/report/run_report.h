// murlreport as a process, in a folder of the test's own.
#pragma once

#include "common/run.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>

struct report_result {
    int status; // -1: it was ended by a signal
    std::string out;
    std::string err;
};

// True if a text has another.
bool has(const std::string &text, const std::string &part);

class report_test : public testing::Test {
protected:
    void SetUp() override;

    // Runs a program with arguments as the shell reads them, in the folder. before comes in front of the
    // program.
    report_result run(const std::string &arguments, const std::string &before = "");

    // Writes and reads a file of the folder.
    void write(const std::string &name, const std::string &bytes);
    std::string read(const std::string &name);

    // Replaces the first of a text by another in a file of the folder.
    void edit(const std::string &name, const std::string &from, const std::string &to);

    // The report of the first script as JSON.
    nlohmann::json report_of(const std::string &arguments);

    // The word of the output's state of a.mrl, and those of all items of a script, each with its line and
    // kind.
    std::string output_state();
    std::string states();
    static std::string states(const nlohmann::json &report);

    // Edits a_conv.mrl, and expects a text among the states.
    void expect_after_edit(const std::string &from, const std::string &to, const std::string &state);

    // The names in the folder, dots left out, sorted, with blanks between.
    std::string names(const std::string &inside = ".");

    std::filesystem::path base;
    std::filesystem::path folder;
};
