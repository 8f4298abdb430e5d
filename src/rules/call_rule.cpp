// The rule of CALL: the old statement as a comment under a tip, and new statements for the one library
// function that has a mechanical rewrite.
#include "rules/emission.h"
#include "rules/rules.h"
#include "support/text.h"

// Arguments of a CALL that are looked at: the function's name and seven values. Further ones are dropped.
constexpr int call_values = 7;
constexpr int call_slots = 1 + call_values;

// The name, and the seven values that aren't empty: an empty one leaves no place holder.
static constexpr form_code call_old = form(
    "// CONVERSION TIP ///////////////////////////////////////////////////\n"
    "// \"{W}\" has been removed in the new MURL language.  These\n"
    "// functions are now part of MURL directly, many of them have new\n"
    "// names in the MURL language.\n"
    "// Original MURL command:\n"
    "// {W} {A1}{, A2}{, A3}{, A4}{, A5}{, A6}{, A7}{, A8}\n",
    call_slots);

// CALL function, values -> a comment; dotprod gets its new statements too
void conv_call(int32_t)
{
    const char *values[call_values];
    for (int i = 0; i < call_values; i++)
        values[i] = slot_ended_text(arg_slots + 2 + i);
    emit_form(call_old);
    conv_call_function(slot_ended_text(arg_slots + 1), values);
    out_char('\n');
}

// CALL dotprod, x1, y1, z1, x2, y2, z2, result -> DOTPROD result, adVec1, adVec2
void conv_call_function(const char *name, const char *const values[7])
{
    if (text_compare_nocase(name, "dotprod") != 0)
        return;
    out_format("// New format for \"%s\":\n", name);
    // Kept: each CALL declares its vectors anew, so that every block can be moved by itself.
    out_text(
        "CLEAR adVec1, adVec2\n"
        "DOUBLE adVec1[0], adVec2[0]\n"
        "ARRAY adVec1[3]\n"
        "ARRAY adVec2[3]\n");
    out_format("adVec1[0] = %s\n", values[0]);
    out_format("adVec1[1] = %s\n", values[1]);
    out_format("adVec1[2] = %s\n", values[2]);
    out_format("adVec2[0] = %s\n", values[3]);
    out_format("adVec2[1] = %s\n", values[4]);
    out_format("adVec2[2] = %s\n", values[5]);
    out_format("DOTPROD %s, adVec1, adVec2\n", values[6]);
}
