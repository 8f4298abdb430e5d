// Entity commands, the ids below 300: geometry, notes, labels, crosshatch and the view.
//
// An entity command ends in a list of attributes, and most rules move these by their place alone: a form
// writes the fixed arguments without a line end, and a tail the attributes behind them, with the line end.
// A tail reads a span of a fixed width, whatever number of attributes the command has; what lies behind the
// statement's list reads as empty. The old line's tail comes before the new line's and reads the same span.
#include "rules/emission.h"
#include "rules/rule_table.h"
#include "rules/rules.h"
#include "source/command_table.h"

// The tails, named for the span that they read.
enum entity_tail : uint8_t {
    TAIL_NONE,
    TAIL_ATTR, // 8 attributes
    TAIL_TEXT  // 15: three numbers of the text's shape, then its attributes
};

constexpr int attr_span = 8;
constexpr int poly_span = 6;
constexpr int text_span = 15;

// One row of the table below. What it writes, in order: tip, old line and its tail, new line and its tail.
struct entity_row {
    int16_t id;
    const char *command;
    const char *old_form;
    const char *tip;    // a block of comment lines, or null
    form_code old_line; // the old statement as a comment; empty for none
    form_code new_line; // empty for none
    entity_tail tail;   // of both lines
    uint8_t span;       // the slot where the attributes begin
    void (*routine)();  // writes everything in place of the other columns, or null
};

// Kept: two blanks behind a full stop, no full stop behind the last "behavior" of tip_default_matrix. Users
// search converted scripts for these lines.
static constexpr char tip_system_view[] =
    "// CONVERSION TIP ///////////////////////////////////////////////////\n"
    "// Matrix numbers less than 9 are now reserved for system views.  You\n"
    "// should change this number to avoid possible unintended behavior.\n"
    "// Original MURL command:\n";

static constexpr char tip_default_matrix[] =
    "// CONVERSION TIP ///////////////////////////////////////////////////\n"
    "// The default Matrix number of 0 is being used.  You\n"
    "// may need to create a Matrix and change this number to\n"
    "// avoid possible unintended behavior Original MURL command:\n";

static constexpr char tip_fill_color[] =
    "// CONVERSION TIP ///////////////////////////////////////////////////\n"
    "// The default Matrix number of 0 is being used.  You\n"
    "// may need to create a Matrix and change this number to\n"
    "// avoid possible unintended behavior.\n"
    "// FILLCOLOR is now done as RGB values so original value of %d\n"
    "// does not apply\n"
    "\n";

static void conv_polygon();
static void conv_polyline();
static void conv_view();
static void conv_vpolygon();

// clang-format off
static constexpr entity_row entity_table[] = {
    // id, command, old form, tip, old line,
    //     new line, tail, span, routine
    {1, "POINT", "POINT x, y, z [, attributes]", nullptr, no_form,
        form("{W} {A1}, {A2}, {A3}"), TAIL_ATTR, 4, nullptr},
    {2, "LINE", "LINE x1, y1, z1, x2, y2, z2 [, attributes]", nullptr, no_form,
        form("{W} {A1}, {A2}, {A3}, {A4}, {A5}, {A6}"), TAIL_ATTR, 7, nullptr},
    {3, "ARC", "ARC x, y, z, radius, start, end [, attributes]", nullptr, no_form,
        form("{W} {A1}, {A2}, {A3}, {A4}, {A5}, {A6}"), TAIL_ATTR, 7, nullptr},
    {4, "CONIC", "CONIC eleven numbers [, attributes]", nullptr, no_form,
        form("{W} {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}, {A10}, {A11}"),
        TAIL_ATTR, 12, nullptr},
    // Kept: the fourth argument of a spline stands in the comment alone. For SPLINE3 it is an attribute.
    {5, "SPLINE", "SPLINE mode, points, count, number [, attributes]",
        tip_default_matrix, form("REM {W} {A1}, {A2}, {A3}, {A4}"),
        form("{W} {A1}, {A2}, {A3}"), TAIL_ATTR, 5, nullptr},
    {6, "POLYGON", "POLYGON mode, fill, count, points [, attributes]",
        nullptr, no_form, no_form, TAIL_NONE, 0, conv_polygon},
    {7, "POLYLINE", "POLYLINE count, points, number, mode, mode [, attributes]",
        nullptr, no_form, no_form, TAIL_NONE, 0, conv_polyline},
    // Kept: a blank and no comma between the two coordinates of a text. Converted scripts read so.
    {15, "TEXT, NOTE", "TEXT x, y, text [, height, aspect, slant] [, attributes]",
        nullptr, form("// Original MURL command:\n// {W} {A1}, {A2}, {A3}"),
        form("{W} {A3}, {A1} {A2}, 0.0, 0, 0, 0"), TAIL_TEXT, 4, nullptr},
    // Kept: a comma directly behind the word. The line stays the old statement: a label has no new form.
    {16, "LABEL", "LABEL six numbers, mode, x, y, text [, height, aspect, slant] [, attributes]",
        nullptr, form("{W}, {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}, {A10}"),
        no_form, TAIL_TEXT, 11, nullptr},
    // Kept: a comma directly behind the word in the comment, where a witness line has a blank.
    {17, "LEADER", "LEADER five numbers, mode [, attributes]",
        nullptr, form("// Original MURL command:\n// {W}, {A1}, {A2}, {A3}, {A4}, {A5}, {A6}"),
        form("LEADERWIT {A1}, {A2}, {A3}, {A4}, {A5}, {A6}"), TAIL_ATTR, 7, nullptr},
    {18, "WITNESS", "WITNESS x1, y1, x2, y2 [, attributes]",
        nullptr, form("// Original MURL command:\n// {W} {A1}, {A2}, {A3}, {A4}"),
        form("LEADERWIT {A1}, {A2}, {A3}, {A4}"), TAIL_ATTR, 5, nullptr},
    {19, "XHATCH", "XHATCH count, mode, points, attribute [, attributes]",
        tip_default_matrix, no_form,
        form("{W} {L1}, {A3}, , , , 0"), TAIL_ATTR, 4, nullptr},
    {20, "GENDIM", "GENDIM four numbers, points, mode, x, y, text [, height, aspect, slant] [, attributes]",
        nullptr, form("REM {W} {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}"),
        form("{W} {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}"), TAIL_TEXT, 10, nullptr},
    {22, "FTEXT, FNOTE", "FTEXT x, y, file [, height, aspect, slant] [, attributes]",
        nullptr, form("// Original MURL command:\n// {W} {A1}, {A2}, {A3}"),
        form("{W} {A3}, {A1} {A2}, 0.0, 0, 0, 2"), TAIL_TEXT, 4, nullptr},
    {129, "VIEW", "VIEW number, nine numbers [, number]",
        nullptr, no_form, no_form, TAIL_NONE, 0, conv_view},
    {256, "CIRCLE", "CIRCLE x, y, z, radius [, attributes]", nullptr, no_form,
        form("{W} {A1}, {A2}, {A3}, {A4}"), TAIL_ATTR, 5, nullptr},
    {257, "VLINE", "VLINE x1, y1, z1, x2, y2, z2 [, attributes]", nullptr, no_form,
        form("{W} {A1}, {A2}, {A3}, {A4}, {A5}, {A6}"), TAIL_ATTR, 7, nullptr},
    {258, "VPOINT", "VPOINT x, y, z [, attributes]", nullptr, no_form,
        form("{W} {A1}, {A2}, {A3}"), TAIL_ATTR, 4, nullptr},
    {259, "SPLINE3", "SPLINE3 mode, points, count [, attributes]",
        tip_default_matrix, form("REM {W} {A1}, {A2}, {A3}, {A4}"),
        form("{W} {A1}, {A2}, {A3}"), TAIL_ATTR, 5, nullptr},
    {260, "VPOLYGON", "VPOLYGON mode, fill, count, points, number [, attributes]",
        nullptr, no_form, no_form, TAIL_NONE, 0, conv_vpolygon},
    {261, "NXHATCH", "NXHATCH count, mode, points, attribute [, attributes]",
        tip_default_matrix, no_form,
        form("{W} {L1}, {A3}, , , , 0"), TAIL_ATTR, 4, nullptr},
};
// clang-format on

// Tells whether no row names a slot that its command lacks.
static constexpr bool slots_fit()
{
    for (const entity_row &row : entity_table) {
        int slots = command_spec_count(row.id);
        if (row.old_line.top_slot > slots || row.new_line.top_slot > slots || row.span > slots)
            return false;
    }
    return true;
}

static_assert(rule_ids_ascend(entity_table, 0, 299));
static_assert(slots_fit());
static constexpr rule_index entity_index = rule_index_make(entity_table, 0);

// The number of attributes that a line writes places for, the first one included: up to the last one with a
// text. Kept: a statement without any attribute gets the place holders of the first seven, one with the first
// alone none.
static int attr_places(const arg_slot *span)
{
    const arg_slot *last = span + attr_span - 1;
    if (last > slots_last)
        last = slots_last;
    while (last >= span && last->text_size == 0)
        last--;
    return last >= span ? static_cast<int>(last - span) + 1 : attr_span - 1;
}

// Tells whether all eight attributes have a short text.
static bool attr_short(const arg_slot *span)
{
    uint32_t longest = 0;
    for (int i = 0; i < attr_span; i++)
        longest = span[i].text_size > longest ? span[i].text_size : longest;
    return longest <= slot_text_slack;
}

// Puts the attributes from first to last at a place, counted from 0; gives the place behind them. How many
// there are can't be foreseen: as long as they are short, all are put there, and then the place is chosen.
static char *put_attributes(char *place, const arg_slot *span, int first, int last)
{
    if (!attr_short(span)) {
        for (int i = first; i <= last; i++)
            place = put_argument(place, span + i);
        return place;
    }
    char *behind[1 + attr_span] = {place};
    for (int i = first; i < attr_span; i++)
        behind[1 + i] = place = put_short_argument(place, span + i);
    return behind[first <= last ? 1 + last : 0];
}

// Reads the eight attributes under the cursor and leaves the cursor behind them.
static void emit_attr_tail()
{
    // Kept: the place of the first attribute holds this constant; the attribute itself is gone.
    char *place = out_take_place(put_room);
    memcpy(place, ", 0", 3);
    place = put_attributes(place + 3, arg_cursor, 1, attr_places(arg_cursor) - 1);
    *place++ = '\n';
    out_give_place(place);
    arg_cursor += attr_span;
}

// The same attributes on a comment line. The cursor stays on the first.
static void emit_attr_comment()
{
    // Kept: the eighth attribute is missing from comments, though it counts for the place holders.
    int places = attr_places(arg_cursor);
    int last = places == attr_span ? places - 2 : places - 1;
    char *place = put_attributes(out_take_place(put_room), arg_cursor, 0, last);
    *place++ = '\n';
    out_give_place(place);
}

// Reads six attributes under the cursor and leaves the cursor behind them. fill takes the third place.
static void emit_poly_tail(int32_t fill)
{
    const arg_slot *span = arg_cursor;
    // Kept: the first attribute is gone, as in the other tails; no place is ever left out here.
    out_text(", 0");
    emit_argument(span + 1);
    out_format(", %d", fill);
    for (int i = 2; i < poly_span; i++)
        emit_argument(span + i);
    out_text(", 1\n");
    arg_cursor += poly_span;
}

// The fifteen attributes of a text on a comment line, those that are there. The cursor stays on the first.
static void emit_text_comment()
{
    const arg_slot *span = arg_cursor;
    char *place = out_take_place(put_room);
    for (int i = 0; i < text_span; i++) {
        // Kept: the eleventh never shows in a comment.
        char *behind = i != 10 ? put_argument(place, span + i) : place;
        place = span[i].text_size > 0 ? behind : place;
    }
    *place++ = '\n';
    out_give_place(place);
}

// The style attribute of a text in words.
static constexpr const char *text_styles[] = {
    ", DEFAULT",       // 0, and any value out of range
    ", Bold",          // 1
    ", Slant",         // 2
    ", Boldboxfill",   // 3
    ", Boldslantfill", // 4
    ", Boldbox",       // 5
    ", Boldslant"      // 6
};
constexpr int32_t text_style_low = -16; // below 0 no word is written
constexpr int32_t text_style_high = 6;
static_assert(sizeof text_styles / sizeof text_styles[0] == text_style_high + 1);

// Reads fifteen attributes under the cursor and leaves the cursor behind them. types points to the arg_types
// byte of the first.
static void emit_text_tail(const uint8_t *types)
{
    arg_slot *span = arg_cursor;
    if (span[3].text_size > 0)
        emit_argument(span + 3);
    else
        out_text(", 0");
    for (int i = 0; i < 6; i++)
        if (i != 3)
            emit_argument(span + i);
    arg_cursor = span + 6;
    int32_t style = take_bounded_int(types[6], text_style_low, text_style_high);
    // Kept: a style below 0 leaves its place out, with no comma.
    if (style >= 0)
        out_text(text_styles[style]);
    char *place = out_take_place(put_room);
    for (int i = 7; i < text_span; i++)
        place = put_argument(place, span + i);
    *place++ = '\n';
    out_give_place(place);
    arg_cursor = span + text_span;
}

// POLYGON mode, fill, count, points, attributes -> POLYLINE count, points, 2 or 3, attributes with fill
static void conv_polygon()
{
    int32_t mode = slot_lval(arg_slots + 1) == 2 ? 3 : 2;
    int32_t fill = slot_lval(arg_slots + 2);
    int32_t count = slot_lval(arg_slots + 3);
    const char *points = slot_ended_text(arg_slots + 4);
    out_format(tip_fill_color, fill);
    out_format("POLYLINE %d, %s, %d", count, points, mode);
    arg_cursor = arg_slots + 5;
    emit_poly_tail(fill);
}

// VPOLYGON mode, fill, count, points, number, attributes -> POLYLINE count, points, attributes with fill
static void conv_vpolygon()
{
    int32_t fill = slot_lval(arg_slots + 2);
    int32_t count = slot_lval(arg_slots + 3);
    const char *points = slot_ended_text(arg_slots + 4);
    out_text(tip_default_matrix);
    // Kept: no third field here, and the last attribute is dropped: the tail is narrower than the list.
    out_format("POLYLINE %d, %s", count, points);
    arg_cursor = arg_slots + 6;
    emit_poly_tail(fill);
}

// POLYLINE count, points, number, mode, mode, attribute, fill, attributes
//     -> POLYLINE, count, points, mode, attributes with fill
static void conv_polyline()
{
    static constexpr form_code new_line = form("{W}, {A1}, {A2}, {A4}", command_spec_count(7));

    int32_t fill = slot_lval(arg_slots + 7);
    out_text(tip_system_view);
    // Kept: a comma directly behind the word.
    emit_form(new_line);
    arg_cursor = arg_slots + 8;
    emit_poly_tail(fill);
}

// VIEW number, nine numbers -> MATRIX number, nine numbers
static void conv_view()
{
    constexpr int32_t system_views = 9; // the numbers below are the system's own
    static constexpr form_code lines = form(
        "// {W} {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}, {A10}\n"
        "MATRIX {A1}, {A2}, {A3}, {A4}, {A5}, {A6}, {A7}, {A8}, {A9}, {A10}\n",
        command_spec_count(129));

    if (slot_lval(arg_slots + 1) < system_views)
        out_text(tip_system_view);
    emit_form(lines);
}

static void emit_comment_line(const entity_row *row)
{
    emit_form(row->old_line);
    if (row->tail == TAIL_TEXT)
        emit_text_comment();
    else
        emit_attr_comment();
}

static void emit_new_line(const entity_row *row)
{
    emit_form(row->new_line);
    if (row->tail == TAIL_TEXT)
        emit_text_tail(arg_types + row->span - 1);
    else
        emit_attr_tail();
}

int32_t conv_entity(int32_t id)
{
    const entity_row *row = rule_find(entity_table, entity_index, id, 0);
    if (row == nullptr)
        return 0;
    if (row->routine != nullptr) {
        row->routine();
        return 0;
    }
    arg_cursor = arg_slots + row->span;
    if (row->tip != nullptr)
        out_text(row->tip);
    if (row->old_line.pieces_used > 0)
        emit_comment_line(row);
    if (row->new_line.pieces_used > 0)
        emit_new_line(row);
    return 0;
}
