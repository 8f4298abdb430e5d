#include "driver/journal.h"

#include "expressions/expr_eval.h"
#include "statements/arg_fetcher.h"
#include "statements/arg_slots.h"
#include "statements/arg_text.h"

#include <stdio.h>
#include <string.h>

constexpr size_t typed_room = 1u << 20; // bytes of a statement's texts that are kept
constexpr int32_t writes_room = 1024;   // a form has two lines of arguments at most

// The statement that is being converted.
static struct {
    void (*take)(const journal_record &record);
    char message[256];
    char typed[typed_room];
    size_t typed_used;
    bool typed_full;                        // from here on nothing is kept
    int32_t position;                       // whose text comes; 0: the surplus
    journal_text arguments[arg_types_size]; // by position less 1
    int32_t argument_count;
    journal_text surplus;
    emit_write writes[writes_room];
    int32_t write_count;
} now;

static void start_statement()
{
    now.message[0] = '\0';
    now.typed_used = 0;
    now.typed_full = false;
    now.position = now.argument_count = now.write_count = 0;
    now.surplus = {now.typed, 0};
}

static void take_message(const char *message)
{
    if (now.message[0] == '\0')
        snprintf(now.message, sizeof now.message, "%s", message);
}

static void take_begin(int32_t position)
{
    now.position = position;
    journal_text begun{now.typed + now.typed_used, 0};
    if (position == 0)
        now.surplus = begun;
    else if (position <= arg_types_size && !now.typed_full)
        now.arguments[(now.argument_count = position) - 1] = begun;
}

static void take_typed(const unsigned char *text, size_t size)
{
    size_t left = typed_room - now.typed_used;
    if (size > left) {
        // An argument that isn't whole isn't kept; of the surplus its beginning will do.
        if (!now.typed_full && now.position > 0)
            now.argument_count--;
        now.typed_full = true;
        size = now.position > 0 ? 0 : left;
    }
    if (now.typed_full && now.position > 0)
        return;
    memcpy(now.typed + now.typed_used, text, size);
    now.typed_used += size;
    journal_text &typed = now.position > 0 ? now.arguments[now.position - 1] : now.surplus;
    typed.size += size;
}

static void take_write(const emit_write &write)
{
    if (now.write_count < writes_room)
        now.writes[now.write_count++] = write;
}

static void take_done(const statement_result &done)
{
    now.take(
        {done, now.message, now.arguments, now.argument_count, now.surplus, now.writes, now.write_count});
    start_statement();
}

void journal_start(void (*take)(const journal_record &record))
{
    const bool listen = take != nullptr;
    now.take = take;
    start_statement();
    expr_error = listen ? take_message : nullptr;
    arg_begins = listen ? take_begin : nullptr;
    arg_typed = listen ? take_typed : nullptr;
    emit_wrote = listen ? take_write : nullptr;
    statement_done = listen ? take_done : nullptr;
}

void journal_stop()
{
    journal_start(nullptr);
}
