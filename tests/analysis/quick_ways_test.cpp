// The quick ways beside the plain ones: what they take they take alike, and what they leave they leave alone.
#include "analysis/expr_eval.h"
#include "analysis/expr_lexer.h"
#include "analysis/expr_quick.h"
#include "analysis/var_store.h"
#include "common/diff.h"
#include "common/random_texts.h"
#include "common/run.h"
#include "driver/batch.h"

#include <gtest/gtest.h>

#include <math.h>
#include <string.h>

// ---- Quick evaluation ----

static random_texts expressions({
    {'e', "%b%o%b;%b%o%b%p%e"},
    {'b', ";;;;; ; ;\t; \t "},
    {'o', "%n;%n;%n;%v;%v;%v;%n;%v;-%b%o;(%e);%f;%x"},
    {'n', "0;1;7;10;2.5;.5;5.;0.1;3.14159265358979;123456789012345"},
    {'v', "x;y;i;c;f;nosuch;other_1;a[1];a[i];b[1][0];a[%e];x23456789012345"},
    {'f', "abs(%e);Sqrt (%e);atan2(%e,%e);HYPOT(%e,%e);floor(%e);foo(%e);cos(%e,%e)"},
    {'x',
     "90071992547409931;0.1234567890123;0.90071992547409931;007;08;0x1F;00.5;1e3;2.5e-1;1d;.;1.2.3;2x;X;_x;"
     "a;a[3];a[-1];b[1];x[0];nosuch[0];$s[0];$$l[1][0];@c;INT;Sizeof(a);Copsize;abs;x234567890123456;5';"
     "6\";~1;+2"},
    {'p', "+;-;*;/;+;-;*;/;<;>;<=;>=;==;!=;&&;||;%q"},
    {'q', "=;^;&;|;#;<<;! =;< =;= =;<>;?;,;@"},
    {'a', "%t=%e;%t%b=%e;%t ==%e"},
    {'t', "x;y;i;c;f;a[1];a [ i ];b[1][x];nosuch;a;b[1];a[9];int;nosuch[1]"},
    {'z', ",;\n;,1)+1];\n)"},
});

// The bytes of all variables: the selection, the records, and the one area that their blocks lie in.
static void variables_keep(std::string *bytes)
{
    bytes->assign(reinterpret_cast<char *>(&var_current), sizeof var_current);
    bytes->append(reinterpret_cast<char *>(var_table), static_cast<size_t>(var_count) * sizeof *var_table);
    bytes->append(static_cast<char *>(Vbuf->areas->base), Vbuf->areas->size);
}

static void variables_restore(const std::string &bytes)
{
    size_t blocks = bytes.size() - Vbuf->areas->size;
    memcpy(&var_current, bytes.data(), sizeof var_current);
    memcpy(var_table, bytes.data() + sizeof var_current, blocks - sizeof var_current);
    memcpy(Vbuf->areas->base, bytes.data() + blocks, Vbuf->areas->size);
}

// A name that was put off before.
static void read_late()
{
    (void)var_read("late", 4, nullptr);
}

static void make_variables()
{
    file_objects();
    for (std::string text :
         {"DOUBLE a[3]", "SHORT b[2][2]", "$s=\"ab\"", "INT i", "CHAR c", "FLOAT f", "x=2.5", "y=3", "late=7",
          "x23456789012345=6", "x234567890123456=7", "f=.1", "a[1]=1.5", "b[1][0]=2", "$$l[1]=\"cd\""})
        (void)eval_expr(text.data());
}

TEST(expr_quick, agrees_with_the_evaluator)
{
    int taken[2] = {0, 0};
    std::string before;
    std::string after;
    bool fresh = true; // the variables have to be made anew
    for (int n = 0; n < 200000; n++) {
        if (fresh || n % 1000 == 0)
            make_variables();
        fresh = false;
        bool assigns = expressions.die() % 3 == 0;
        std::string text = expressions.expand(assigns ? "%a" : "%e");
        std::string source = text + expressions.pick('z') + std::string(quick_slack, 0);
        const char *end = source.data() + text.size();
        bool late = expressions.die() % 2 == 0;
        SCOPED_TRACE(source.data());

        variables_keep(&before);
        var_unread = late ? read_late : nullptr;
        double value = 0;
        bool took = assigns ? quick_assignment(source.data(), end) : quick_expr(source.data(), end, &value);
        if (var_unread != nullptr)
            var_unread();
        variables_keep(&after);

        variables_restore(before);
        if (late)
            read_late();
        if (took) {
            taken[assigns]++;
            const double *wanted = eval_expr(text.data());
            ASSERT_NE(wanted, nullptr);
            // Which sign the sum of two NaN has is left to the compiler: they are kept out of the variables.
            fresh = isnan(*wanted);
            if (fresh)
                continue;
            ASSERT_TRUE(assigns || memcmp(&value, wanted, sizeof value) == 0);
        }
        variables_keep(&before);
        ASSERT_TRUE(before == after);
    }
    EXPECT_GT(taken[0], 60000) << "of about 133,000 expressions";
    EXPECT_GT(taken[1], 10000) << "of about 67,000 assignments";
}
