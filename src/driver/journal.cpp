#include "driver/journal.h"

#include "expressions/expr_eval.h"
#include "statements/arg_fetcher.h"
#include "statements/arg_slots.h"
#include "statements/arg_text.h"

#include <stdio.h>
#include <string.h>

constexpr size_t typed_capacity = 1u << 20; // bytes of a statement's texts that are kept
constexpr int32_t writes_capacity = 1024;   // a form has two lines of arguments at most

// The statement that is being converted.
static struct {
    void (*callback)(const journal_record &record);
    char message[256];
    char typed[typed_capacity];
    size_t typed_used;
    bool typed_full;                        // no more is kept
    int32_t position;                       // of the argument whose text comes next; 0: the surplus
    journal_text arguments[arg_types_size]; // by position less 1
    int32_t argument_count;
    journal_text surplus;
    emit_write writes[writes_capacity];
    int32_t write_count;
} current;

static void start_statement()
{
    current.message[0] = '\0';
    current.typed_used = 0;
    current.typed_full = false;
    current.position = current.argument_count = current.write_count = 0;
    current.surplus = {current.typed, 0};
}

static void on_message(const char *message)
{
    if (current.message[0] == '\0')
        snprintf(current.message, sizeof current.message, "%s", message);
}

static void on_begin(int32_t position)
{
    current.position = position;
    journal_text begun{current.typed + current.typed_used, 0};
    if (position == 0)
        current.surplus = begun;
    else if (position <= arg_types_size && !current.typed_full)
        current.arguments[(current.argument_count = position) - 1] = begun;
}

static void on_typed(const unsigned char *text, size_t size)
{
    size_t left = typed_capacity - current.typed_used;
    if (size > left) {
        // An incomplete argument isn't kept; of the surplus the beginning is enough.
        if (!current.typed_full && current.position > 0)
            current.argument_count--;
        current.typed_full = true;
        size = current.position > 0 ? 0 : left;
    }
    if (current.typed_full && current.position > 0)
        return;
    memcpy(current.typed + current.typed_used, text, size);
    current.typed_used += size;
    journal_text &typed = current.position > 0 ? current.arguments[current.position - 1] : current.surplus;
    typed.size += size;
}

static void on_write(const emit_write &write)
{
    if (current.write_count < writes_capacity)
        current.writes[current.write_count++] = write;
}

static void on_done(const statement_result &done)
{
    current.callback({done, current.message, current.arguments, current.argument_count, current.surplus,
                      current.writes, current.write_count});
    start_statement();
}

void journal_start(void (*callback)(const journal_record &record))
{
    const bool listen = callback != nullptr;
    current.callback = callback;
    start_statement();
    expr_error = listen ? on_message : nullptr;
    arg_begins = listen ? on_begin : nullptr;
    arg_typed = listen ? on_typed : nullptr;
    emit_wrote = listen ? on_write : nullptr;
    statement_done = listen ? on_done : nullptr;
}

void journal_stop()
{
    journal_start(nullptr);
}
