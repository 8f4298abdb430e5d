"""What tests/hostile runs. For each case, at a quarter of its size and at the whole:

- exit status 0, and the output, byte by byte, that the case says
- a peak of resident memory under 20 MB, beside up to three times what the script's own variables hold: a list
  that grows moves to a new block with bytes to spare
- time in proportion to the size: the whole may take four quarters, times 2, and 20 ms. That is the time of the
  converter itself; what the system takes for a GB on a disk has more to do with the disk.

A text is an iterable of byte strings, so that none of them has to lie in memory as a whole.
"""

import os
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
from pathlib import Path

MEGABYTE = 1 << 20
PEAK = 20 * MEGABYTE
TIME_OUT = 300  # seconds a run
TIME_FACTOR = 2
TIME_NOISE = 0.1  # seconds; a run of a few milliseconds may be counted as none
ADDRESS_SPACE = 2048 * MEGABYTE  # of the converter, so that a fault doesn't take the machine down
LINE = 3900  # characters of a statement that nobody knows


# ---- Texts ----

def times(piece, count):
    at_once = max(1, (1 << 18) // len(piece))
    block = piece * at_once
    for _ in range(count // at_once):
        yield block
    yield piece * (count % at_once)


def join(*texts):
    for text in texts:
        if isinstance(text, bytes):
            yield text
        else:
            yield from text


def numbered(form, numbers):
    block = []
    for number in numbers:
        block.append(form % number)
        if len(block) == 4096:
            yield b"".join(block)
            block.clear()
    yield b"".join(block)


# A line that is taken as text, without its line end, as it comes out: in pieces of a statement's length. The
# evaluator likes none of them, or all: then an empty line follows a piece that has its line end.
def in_pieces(text, liked=False):
    rest = b""
    for block in text:
        rest += block
        whole = len(rest) // LINE * LINE
        for start in range(0, whole, LINE):
            yield rest[start:start + LINE] + b"\n"
        rest = rest[whole:]
    yield rest + (b"\n\n" if liked and rest else b"\n")


# ---- Cases ----

class Case:
    """make(size) returns script and output; size counts items."""

    def __init__(self, name, size, make, variables=lambda size: 0, printed=b"", growing=True):
        self.name = name
        self.size = size
        self.make = make
        self.variables = variables  # bytes that the script's variables hold
        self.printed = printed
        self.growing = growing  # False: the script stops early, or is of one size


def unchanged(*pieces):
    """A case's make, for a script that comes out as it went in: a head, a piece that is repeated, a tail."""
    def make(size):
        def text():
            return join(pieces[0], times(pieces[1], size), pieces[2])
        return text(), text()
    return make


def word_line(size):
    # 127 letters are the word and one is lost; after a blank comes the rest of what a statement holds.
    statements = size // LINE
    piece = b"a" * 127 + b" " + b"a" * (LINE - 128) + b"\n"
    return join(times(b"a", statements * LINE), b"\n"), join(times(piece, statements), b"\n")


def commas(size):
    return join(times(b",", size), b"\nREM end\n"), join(in_pieces(times(b",", size)), b"REM end\n")


def commas_of_a_command(size):
    return (join(b"POINT 1,2,3", times(b",", size), b"\nREM end\n"),
            [b"POINT 1, 2, 3, 0, , , , , , \nREM end\n"])


def commas_of_a_print_list(size):
    # The 101st item is too many. Nothing is left of the one before it, and the rest is text.
    return (join(b'PRINT ""', times(b",", size), b"\n"), in_pieces(times(b",", size - 100)))


def labels(size):
    # One too many ends the file.
    return (numbered(b":l%07d\n", range(1, size + 1)), numbered(b":l%07d \n", range(1, 1002)))


def lone_colons(size):
    return times(b":\n", size), times(b": \n", size)


def huge_array(size):
    return ([b"DOUBLE a[%d]\nREM behind it\n" % size], [b"DOUBLE a[%d]\n" % size])


def largest_array(size):
    script = b"DOUBLE a[%d]\na[%d] = 1\n" % (size, size - 1)
    return [script, b"REM end\n"], [script, b"\nREM end\n"]


def regrown_array(size):
    return ([b"DOUBLE a[%d]\nDOUBLE a[%d]\na[%d] = 1\n" % (size, size + 1, size)],
            [b"DOUBLE a[%d]\nDOUBLE a[%d]\na[%d] = 1\n\n" % (size, size + 1, size)])


def largest_list(size):
    # The offsets of the third statement alone would pass what a variable may hold.
    statements = [b'$$l[%d] = "x"\n' % item for item in (size, size + 1, 67108863)]
    return statements, [statements[0], b"\n", statements[1], b"\n", statements[2]]


def far_item(size):
    statement = b'$$l[2000000] = "x"\n'
    return times(statement, size), times(statement + b"\n", size)


def list_by_item(size):
    return (numbered(b'$$l[%d] = "item"\n', range(size)), numbered(b'$$l[%d] = "item"\n\n', range(size)))


def list_downward(size):
    items = range(size - 1, -1, -1)
    return (numbered(b'$$l[%d] = "item"\n', items), numbered(b'$$l[%d] = "item"\n\n', items))


def list_alternating(size):
    # One item, the first, changes its length.
    head = b'$$l[40000000] = "x"\n'
    piece = b'$$l[0] = "a"\n$$l[0] = "abcd"\n'
    return join(head, times(piece, size)), join(head, b"\n", times(piece.replace(b"\n", b"\n\n"), size))


def arrays_together(size):
    return ([b"CHAR a[%d]\nCHAR b[%d]\nREM after it\n" % (size, size)],
            [b"CHAR a[%d]\nCHAR b[%d]\n" % (size, size)])


def variables(size):
    # A name is no assignment when the table is full: its empty line is missing.
    return (numbered(b"v%d = 1\n", range(size)),
            join(numbered(b"v%d = 1\n\n", range(1000)), numbered(b"v%d = 1\n", range(1000, size))))


def parentheses(size):
    def line():
        return join(b"x = ", times(b"(", size), b"1", times(b")", size))
    return join(line(), b"\n"), in_pieces(line())


def parentheses_of_a_command(size):
    # The text that was read of the argument is left, but for the character read last.
    return (join(b"POINT ", times(b"(", size), b"\n"),
            join(b" " + b"(" * LINE + b"\n", in_pieces(times(b"(", size - LINE - 1))))


def nested_few(size):
    line = b"x = " + b"(" * 46 + b"1" + b")" * 46 + b"\n"  # as deep as the parser goes
    return times(line, size), times(line + b"\n", size)


def digits(size):
    def line():
        return join(b"x = ", times(b"1", size))
    return join(line(), b"\n"), in_pieces(line(), liked=True)


def digits_of_a_command(size):
    return (join(b"POINT ", times(b"7", size), b"\n"),
            join(b" " + b"7" * LINE + b"\n", in_pieces(times(b"7", size - LINE - 1), liked=True)))


def open_string(size):
    # The string goes on over the lines until the buffer is full, and is too long for the argument store. The first
    # number of the next line is the character read last, and the second is a statement.
    lines = LINE // 4
    return (join(b'PRINT "', times(b"7 7\n", size)),
            join(b" ", times(b"7 7\n", lines), b"\n 7\n\n", times(b"7 7\n", size - lines - 1)))


def one_string_line(size):
    return (join(b'PRINT "', times(b",", size), b'"\n'),
            join(b" " + b"," * LINE + b"\n", in_pieces(join(times(b",", size - LINE - 1), b'"'))))


def nuls(size):
    # A text of NULs is an empty one; the first of each statement is no part of what it can hold.
    statements = -(-size // (LINE + 1))
    return times(b"\0", size), times(b"\n", statements)


def continuations(size):
    return join(times(b"\\\n", size), b"REM end\n"), [b"REM end\n"]


def continued_in_crlf(size):
    return join(b"REM a", times(b"\\\r\n", size), b"b\r\n"), [b"REM ab\n"]


def menu(size):
    # Behind nine strings a number is due. Its text is cut where its name ends.
    return (join(b'GETMENU "p"', times(b',"i"', size), b"\n"),
            join(b' "i\n', in_pieces(join(b'"i"', times(b',"i"', size - 11)))))


def full_menu(size):
    items = b',"i"' * 9
    merged = b"|".join([b"i"] * 9)
    return (join(b'GETMENU "p"', items, b",1,2", times(b',"i"', size), b"\n"),
            [b'REM GETMENU "p"', items, b',1,2\nGETMENU "p", "', merged, b'", \n\n'])


def print_list(size):
    return (join(b'PRINT "i"', times(b',"i"', size - 1), b"\n"),
            join(b" i\n", in_pieces(join(b'"i"', times(b',"i"', size - 101)))))


def declared_often(size):
    # A declaration that ends after a comma is complete. The rest of the line is text.
    return (join(b"INT ", times(b"a,", size), b"\n"),
            join(b"INT ", times(b"a,", LINE // 2), in_pieces(times(b"a,", size - LINE // 2))))


def spline_far_from_its_point(size):
    # A SPLINE looks for the word after it, wherever that is.
    return (join(b"SPLINE ", times(b" ", size), b"\nREM end\n"), [b"REM end\n"])


MB = MEGABYTE
CASES = [
    Case("remark_line", 1024 * MB, unchanged(b"REM ", b"x", b"\n")),
    Case("word_line", 64 * MB, word_line),
    Case("blank_line", 64 * MB, unchanged(b"", b" ", b"\nREM end\n")),
    Case("blank_lines", 100000000, unchanged(b"", b"\n", b"REM end\n")),
    Case("commas", 64000000, commas),
    Case("commas_of_a_command", 64000000, commas_of_a_command),
    Case("commas_of_a_print_list", 64000000, commas_of_a_print_list),
    Case("labels", 1000000, labels, printed=b"l0001001", growing=False),
    Case("lone_colons", 16000000, lone_colons),
    Case("huge_array", 2147483647, huge_array, growing=False),
    Case("largest_array", 33554431, largest_array, variables=lambda size: 8 * size, growing=False),
    Case("regrown_array", 25000000, regrown_array, variables=lambda size: 8 * size, growing=False),
    Case("largest_list", 60000000, largest_list, variables=lambda size: 4 * size, growing=False),
    Case("far_item", 1000000, far_item, variables=lambda size: 4 * 2000001),
    Case("list_by_item", 1000000, list_by_item, variables=lambda size: 10 * size),
    Case("list_downward", 1000000, list_downward, variables=lambda size: 10 * size),
    Case("list_alternating", 1000000, list_alternating, variables=lambda size: 4 * 40000001, growing=False),
    Case("arrays_together", 134217728, arrays_together, variables=lambda size: size, growing=False),
    Case("variables", 1000000, variables),
    Case("parentheses_100000", 100000, parentheses),
    Case("parentheses", 1000000, parentheses),
    Case("parentheses_of_a_command", 1000000, parentheses_of_a_command),
    Case("nested_few", 1000000, nested_few),
    Case("digits", 1000000, digits),
    Case("digits_of_a_command", 1000000, digits_of_a_command),
    Case("open_ifs", 4000000, unchanged(b"", b"IF 1\n", b"")),
    Case("open_quotes", 4000000, unchanged(b"", b'"\n', b"")),
    Case("open_comment", 4000000, unchanged(b"", b"/* 7 7\n", b"")),
    Case("open_string", 16000000, open_string),
    Case("string_line", 64 * MB, one_string_line),
    Case("nuls", 64 * MB, nuls),
    Case("continuations", 64 * MB, continuations),
    Case("continued_in_crlf", 16 * MB, continued_in_crlf),
    Case("array_line", 16 * MB, unchanged(b"ARRAY a[9] = {1", b",1", b"}\n")),
    Case("declared_often", 16 * MB, declared_often),
    Case("menu", 1000000, menu),
    Case("full_menu", 1000000, full_menu),
    Case("print_list", 1000000, print_list),
    Case("spline_far_from_its_point", 64 * MB, spline_far_from_its_point),
]


# ---- One run ----

class Failure(Exception):
    pass


def convert(converter, script):
    """Gives exit status, what was printed, the time used, and the peak of resident memory in bytes.

    time starts the converter, because the peak of a process includes what its parent held when it forked.
    """
    peak_file = script.with_suffix(".peak")

    def limit():
        resource.setrlimit(resource.RLIMIT_AS, (ADDRESS_SPACE, ADDRESS_SPACE))
    process = subprocess.Popen(
        ["time", "-q", "-f", "%M", "-o", peak_file, converter, script],
        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, start_new_session=True, preexec_fn=limit)
    late = threading.Event()

    def stop():
        late.set()
        os.killpg(process.pid, signal.SIGKILL)
    timer = threading.Timer(TIME_OUT, stop)
    timer.start()
    printed = process.stdout.read()
    _, status, used = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    timer.cancel()
    process.stdout.close()
    if late.is_set():
        raise Failure("no end after %d s" % TIME_OUT)
    return process.returncode, printed, used, 1024 * int(peak_file.read_text() or 0)


def compare(wanted, path):
    at = 0
    with open(path, "rb", buffering=0) as output:
        for block in wanted:
            got = b""
            while len(got) < len(block) and (more := output.read(len(block) - len(got))):
                got += more
            if got != block:
                same = len(os.path.commonprefix([got, block]))
                raise Failure("output differs at %d: %r, wanted %r"
                              % (at + same, got[same:same + 20], block[same:same + 20]))
            at += len(block)
        if more := output.read(20):
            raise Failure("output goes on at %d: %r" % (at, more))


def run(case, size, converter, folder):
    """Gives bytes of the script, seconds of the converter and of the system, peak."""
    script = folder / "script.mrl"
    output = folder / "script_conv.mrl"
    text, wanted = case.make(size)
    with open(script, "wb", buffering=0) as file:
        for block in text:
            file.write(block)
    length = script.stat().st_size
    status, printed, used, peak = convert(converter, script)
    if status != 0:
        raise Failure("exit status %d, %r" % (status, printed[:60]))
    if printed != case.printed:
        raise Failure("printed %r" % printed[:60])
    compare(wanted, output)
    # A short run says little, so the best of three counts.
    seconds = used.ru_utime
    for _ in range(2 if seconds < 0.5 else 0):
        seconds = min(seconds, convert(converter, script)[2].ru_utime)
    allowed = PEAK + 3 * case.variables(size)
    if peak > allowed:
        raise Failure("peak of %.1f MB, %.1f MB allowed" % (peak / MEGABYTE, allowed / MEGABYTE))
    script.unlink()
    output.unlink()
    return length, seconds, used.ru_stime, peak


def run_case(case, shrink, converter, folder):
    """Gives the columns of the table, or raises a Failure."""
    whole = max(case.size // shrink, min(case.size, 250000)) if case.growing else case.size
    quarter = ""
    if case.growing:
        quarter_seconds = run(case, whole // 4, converter, folder)[1]
        quarter = "%.3f" % quarter_seconds
    length, seconds, system, peak = run(case, whole, converter, folder)
    if case.growing and seconds > 4 * TIME_FACTOR * quarter_seconds + TIME_NOISE:
        raise Failure("a quarter takes %.3f s, the whole %.3f s" % (quarter_seconds, seconds))
    return "%12d %8s %8.3f %8.3f %8.1f" % (length, quarter, seconds, system, peak / MEGABYTE)


def main():
    converter = os.path.abspath(sys.argv[1])
    size = sys.argv[2] if len(sys.argv) > 2 else "quick"
    names = sys.argv[3:] or [case.name for case in CASES]
    shrink = 16 if size == "quick" else 1
    folder = Path(tempfile.mkdtemp(prefix="murlconv_hostile."))
    failed = 0
    try:
        need = 3072 * MEGABYTE // shrink
        if shutil.disk_usage(folder).free < need:
            sys.exit("tests/hostile: %s has less than %d MB free" % (folder, need // MEGABYTE))
        print("%-26s %12s %8s %8s %8s %8s" % ("case", "bytes", "s of 1/4", "s", "system s", "peak MB"))
        for case in CASES:
            if case.name not in names:
                continue
            try:
                columns = run_case(case, shrink, converter, folder)
            except Failure as failure:
                failed += 1
                columns = "FAILED: %s" % failure
            print("%-26s %s" % (case.name, columns), flush=True)
    finally:
        shutil.rmtree(folder)
    return 1 if failed else 0


sys.exit(main())
