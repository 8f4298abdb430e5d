// pow for the Windows build.
//
// The cross compiler's library computes whole powers by repeated products, and negative ones a few steps
// off: 0.0000005 in a script would not be the number nearest to it. The C library of the system does better.
#include <math.h>

// The system's pow, by the name that the linker knows for it.
extern "C" double (*__imp_pow)(double, double);

double pow(double base, double exponent)
{
    return __imp_pow(base, exponent);
}
