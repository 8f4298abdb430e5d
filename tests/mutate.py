"""Breaks the converter in small ways, one at a time, and looks whether the tests notice; tests/mutate has the
details. Run at the repository's root."""

import hashlib
import json
import os
import re
import resource
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path.cwd()
WORK = Path(os.environ["MURL_BUILD"]) / "mutation"
TREE = WORK / "tree"  # the copy that is broken
OBJECTS = WORK / "objects"
RELEASE = WORK / "release"
SURVIVORS = Path("tests/mutation_survivors.txt")
DEFAULT_COUNT = 260
DEFAULT_SEED = 1
WANTED_PERCENTAGE = 95
MEMORY_LIMIT = 4 << 30  # bytes of a test's address space
FILE_LIMIT = 1 << 28  # bytes of a file that a test writes
BUILD_LIMIT = 300  # seconds
SURVIVED = "SURVIVED"
NO_PROGRAM = "doesn't compile"
SAME_PROGRAM = "the same program"
ALIKE = "alike:"  # so begins the reason of a mutation that makes no difference
COMPILER_FLAGS = "-w -fconstexpr-ops-limit=20000000"  # a constant that loops is soon given up
TEST_LIMIT = 20  # seconds; a test that is slow by nature gets five times what it takes
FIRST_TEST_LIMIT = 300  # the same for the unbroken code


# ---- Reading C++ ----

TOKEN = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)
      | (?P<directive>^[ ]*\#[^\n]*)
      | (?P<string>"(?:[^"\\\n]|\\.)*")
      | (?P<char>'(?:[^'\\\n]|\\.)+')
      | (?P<number>\b\d[\w.']*)
      | (?P<word>[A-Za-z_]\w*)
      | (?P<space>\s+)
      | (?P<sign><<=|>>=|->|\+\+|--|<<|>>|[-+*/%&|^<>=!]=|&&|\|\||::|.)""",
    re.X | re.S | re.M,
)


class Token:
    def __init__(self, kind, text, start):
        self.kind, self.text, self.start = kind, text, start


def tokens_of(code):
    return [Token(match.lastgroup, match.group(), match.start()) for match in TOKEN.finditer(code)]


# ---- Ways to break it ----

OPERATORS = {
    "<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "+": "-", "-": "+", "*": "/",
    "/": "*", "%": "*", "&&": "||", "||": "&&", "&": "|", "|": "&", "^": "&", "<<": ">>", ">>": "<<",
    "+=": "-=", "-=": "+=", "|=": "&=", "&=": "|=",
}  # fmt: skip
ESCAPES = {"\\n": "\\t", "\\t": " ", "\\r": "\\n", "\\0": "\\1", "\\\\": "/", "\\'": '"', '"': "`", "~": "}"}
# Calls whose literals reach a user, or decide how a value does.
WRITERS = {"form", "out_text", "out_format", "fputs", "printf", "fprintf", "snprintf", "report"}
STATEMENT = re.compile(
    r"""[ ]{4,}(?:
        (?:\(void\))?(?!return\b|if\b|while\b|for\b|switch\b|static_assert\b)[\w:]+\(.*\)  # a call
      | \**\(?\*?\w+\)?(?:(?:\.|->|::)\w+|\[[^\]]*\])*[ ](?:[-+*/%&|^]|<<|>>)?=[ ].*        # an assignment
      | (?:\+\+|--)?[\w.\[\]]+(?:->\w+)*(?:\+\+|--)?                                        # a step
    );""",
    re.X,
)
NO_STATEMENT = re.compile(r"\s*(?:break|continue|return|[\w.]+);")
RETURNED_NAME = re.compile(r"return [A-Z][A-Z_]+;")


def next_number(text):
    """A number literal with its value one higher; None if it has a form of its own."""
    match = re.fullmatch(r"(0[xX][\dA-Fa-f]+|\d+)([uUlL]*)", text)
    if match is None:
        return None
    digits, suffix = match.groups()
    if digits[:2] in ("0x", "0X"):
        return f"0x{int(digits, 16) + 1:0{len(digits) - 2}X}{suffix}"
    return None if digits != "0" and digits[0] == "0" else f"{int(digits) + 1}{suffix}"


def next_char(text):
    body = text[1:-1]
    if body in ESCAPES:
        return f"'{ESCAPES[body]}'"
    return f"'{chr(ord(body) + 1)}'" if len(body) == 1 and body not in "&[" else None


def choice_of(text):
    """A number that picks the character of a literal that is changed: any, but always the same."""
    return int(hashlib.sha1(text.encode()).hexdigest(), 16)


def other_string(text):
    """A literal with a blank removed, or one added where there is none."""
    body = text[1:-1]
    if not body:
        return None
    blanks = [at for at, c in enumerate(body) if c == " "]
    choice = choice_of(text)
    if blanks and choice % 3:
        at = blanks[choice // 3 % len(blanks)]
        return f'"{body[:at]}{body[at + 1:]}"'
    stop = len(body) - 2 if body.endswith("\\n") else len(body)
    return f'"{body[:stop]} {body[stop:]}"'


def other_spec(text):
    """The spec of a command where one argument that had to be there may be left out, or the reverse."""
    pairs = text[1:-1].split(" ")
    at = choice_of(text) % len(pairs)
    pairs[at] = f"{int(pairs[at], 16) ^ 0x10:02X}"
    return f'"{" ".join(pairs)}"'


def written_literal(opener, before_opener):
    """Tells whether a literal is written, by what encloses it: a writer's call or a list of texts."""
    if opener == "(":
        return before_opener in WRITERS
    return opener in ("{", "=") and before_opener in ("=", "]")


def routine_at(code, start):
    """The routine or table that an offset belongs to: the name in the last line up to it that isn't indented."""
    name = "file"
    for match in re.finditer(r"^(?!static_assert)[A-Za-z_].*$", code[:code.find("\n", start)], re.M):
        line = match.group()
        found = re.search(r"(\w+)\(", line) or re.search(r"(\w+)(?:\[[^]]*\])*(?: = | ?\{|\{|;)", line)
        if found:
            name = "enum" if line.startswith("enum") else found.group(1)
    return name


class Site:
    """One mutation: at an offset of a file, old becomes new."""

    def __init__(self, path, code, kind, start, old, new):
        self.path, self.kind, self.start, self.old, self.new = path, kind, start, old, new
        line_start = code.rfind("\n", 0, start) + 1
        line_end = code.find("\n", start)
        broken = code[line_start:start] + new + code[start + len(old):line_end]
        self.line = code.count("\n", 0, start) + 1
        self.routine = routine_at(code, start)
        self.before = code[line_start:line_end].strip()
        self.after = broken.strip()
        self.id = ""

    def key(self):
        return f"{self.path} {self.routine}", self.before, self.after


def token_sites(path, code):
    enclosing = []  # the token that opens and the one in front of it
    previous = Token("sign", "", 0)
    in_assertion = False
    tokens = tokens_of(code)
    for at, token in enumerate(tokens):
        text = token.text
        if token.kind in ("space", "comment", "directive"):
            continue
        if text == "static_assert":
            in_assertion = True
        opener, before_opener = enclosing[-1] if enclosing else ("", "")
        if opener != "(" and previous.text == "=":
            opener, before_opener = "=", tokens[max(at - 4, 0)].text
        new = kind = None
        blanks = code[token.start - 1:token.start].isspace() and code[token.start + len(text):][:1].isspace()
        if token.kind == "number" and path.endswith("command_rows.h") and len(text) == 4:
            pass  # the id of a system command, which is one like the other
        elif token.kind == "number":
            kind, new = "constant", next_number(text)
        elif token.kind == "char":
            kind, new = "character", next_char(text)
        elif token.kind == "string" and re.fullmatch(r'"[0-7][0-8](?: [0-7][0-8])*"', text):
            kind, new = "spec", other_spec(text)
        elif token.kind == "string" and (written_literal(opener, before_opener) or previous.kind == "string"):
            kind, new = "literal", other_string(text)
        elif text in ("true", "false"):
            kind = "return" if previous.text == "return" else "truth"
            new = "false" if text == "true" else "true"
        elif text in ("++", "--"):
            kind, new = "operator", "--" if text == "++" else "++"
        elif text in OPERATORS and blanks:
            kind, new = "operator", OPERATORS[text]
        elif text == "!":
            kind, new = "negation", ""
        if new is not None and not in_assertion:
            yield Site(path, code, kind, token.start, text, new)
        if text in ("(", "{", "["):
            enclosing.append((text, previous.text))
        elif text in (")", "}", "]") and enclosing:
            enclosing.pop()
        if text == ";" and not enclosing:
            in_assertion = False
        previous = token


def line_sites(path, code):
    start = 0
    for line in code.split("\n"):
        if STATEMENT.fullmatch(line) and not NO_STATEMENT.fullmatch(line):
            body = line.strip()
            yield Site(path, code, "statement", start + line.index(body), body, ";")
        match = RETURNED_NAME.search(line)
        if match is not None:
            yield Site(path, code, "return", start + match.end() - 1, ";", " + 1;")
        start += len(line) + 1


def sites_of(path):
    """All mutations of a file. Their ids depend on the lines' text, not on their numbers."""
    code = (ROOT / path).read_text()
    sites = list(token_sites(path, code)) + list(line_sites(path, code))
    seen = {}
    for site in sites:
        turn = seen[site.key()] = seen.get(site.key(), 0) + 1
        site.id = hashlib.sha1("\0".join((*site.key(), str(turn))).encode()).hexdigest()[:8]
    return sites


# ---- Which of them ----


def source_paths():
    # murlreport's part isn't built here, nor is the journal linked: every change would give the same program.
    other = ("windows", "journal")
    paths = [path for path in (ROOT / "src").rglob("*") if path.suffix in (".cpp", ".h")]
    wanted = [path for path in paths if not path.name.startswith(other) and ROOT / "src/report" not in path.parents]
    return sorted(str(path.relative_to(ROOT)) for path in wanted)


def ranked(sites, seed):
    """The sites of a file in the order in which they are taken: by lot, one kind after the other."""
    kinds = {}
    for site in sorted(sites, key=lambda site: hashlib.sha1(f"{seed} {site.id}".encode()).digest()):
        kinds.setdefault(site.kind, []).append(site)
    order = []
    while any(kinds.values()):
        order += [of_kind.pop(0) for of_kind in kinds.values() if of_kind]
    return order


def shares(order, count):
    """How many mutations each file gets: one, if there are enough, and more by the number of sites."""
    weights = {path: min(len(sites), 200) for path, sites in order.items()}
    total = sum(weights.values())
    missing = {path: max(1.0, count * weight / total) for path, weight in weights.items()}
    share = dict.fromkeys(order, 0)
    for _ in range(min(count, sum(len(sites) for sites in order.values()))):
        path = max((path for path in order if share[path] < len(order[path])), key=missing.get)
        share[path] += 1
        missing[path] -= 1
    return share


def select(only, seed):
    """The sites of each file in order, of all of src or of what is asked for."""
    order = {path: ranked(sites_of(path), seed) for path in source_paths()}
    if only:
        ids = set(only.split(","))
        for path, sites in order.items():
            order[path] = [site for site in sites if site.id in ids or path.startswith(only)]
    return {path: sites for path, sites in order.items() if sites}


# ---- Building and testing ----


def run(command, limit, **options):
    """Runs a command in a process group of its own; its status, None after the time limit."""
    process = subprocess.Popen(
        command,
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        start_new_session=True,
        **options,
    )
    try:
        output, _ = process.communicate(timeout=limit)
        return process.returncode, output
    except subprocess.TimeoutExpired:
        return None, b""
    finally:
        if process.poll() is None:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()


def copy_tree():
    """Makes the copy like the working tree; what is alike keeps its time, so that little is built."""
    wanted = set()
    for folder, names, files in os.walk(ROOT):
        if Path(folder) == ROOT:
            names[:] = [name for name in names if name not in ("build", "dist", ".git")]
        for name in files:
            source = Path(folder) / name
            copy = TREE / source.relative_to(ROOT)
            wanted.add(copy)
            if not copy.exists() or copy.read_bytes() != source.read_bytes():
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(source, copy)
                os.utime(copy)
    for path in [path for path in TREE.rglob("*") if path.is_file() and path not in wanted]:
        path.unlink()


def configure(folder, *settings):
    command = ["cmake", "-S", str(TREE), "-B", str(folder), "-G", "Ninja"]
    status, output = run([*command, f"-DCMAKE_CXX_FLAGS={COMPILER_FLAGS}", *settings], BUILD_LIMIT)
    if status != 0:
        sys.exit(f"mutate: the build can't be set up\n{output.decode(errors='replace')}")


def build(folder, target):
    status, output = run(["cmake", "--build", str(folder), "-j1", "--target", target], BUILD_LIMIT)
    return status == 0, output


def release_program():
    """The program that users get, without what names its symbols; empty if it can't be built."""
    return (RELEASE / "murlconv").read_bytes() if build(RELEASE, "murlconv")[0] else b""


class Test:
    def __init__(self, entry):
        self.name = entry["name"]
        # A test of arguments of its own is no program of googletest.
        self.command = entry["command"] + ["--gtest_fail_fast"] * (len(entry["command"]) == 1)
        self.environment = dict(os.environ)
        if self.name != "expressions_test":  # it takes hundreds of large blocks, which would be filled
            self.environment["MALLOC_PERTURB_"] = "165"
        for entry_property in entry.get("properties", []):
            if entry_property["name"] == "ENVIRONMENT":
                self.environment.update(value.split("=", 1) for value in entry_property["value"])
        self.seconds = 0.0

    def run(self):
        limit = max(TEST_LIMIT, 5 * self.seconds) if self.seconds else FIRST_TEST_LIMIT

        def limits():
            resource.setrlimit(resource.RLIMIT_AS, (MEMORY_LIMIT, MEMORY_LIMIT))
            resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_LIMIT, FILE_LIMIT))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

        start = time.monotonic()
        status, output = run(self.command, limit, cwd=OBJECTS, env=self.environment, preexec_fn=limits)
        self.seconds = self.seconds or time.monotonic() - start
        return status == 0, output


def prepare():
    """Builds the unbroken copy, sees all tests pass, and returns them, the quickest first."""
    TREE.mkdir(parents=True, exist_ok=True)
    copy_tree()
    configure(OBJECTS, "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0", "-DMURL_HEAP_CHECKS=ON")
    configure(RELEASE, "-DCMAKE_BUILD_TYPE=Release", "-DBUILD_TESTING=OFF", "-DCMAKE_EXE_LINKER_FLAGS=-s")
    built, output = build(OBJECTS, "all")
    if not built:
        sys.exit(f"mutate: the unbroken code can't be built\n{output.decode(errors='replace')}")
    listing = subprocess.run(
        ["ctest", "--test-dir", str(OBJECTS), "--show-only=json-v1"], check=True, capture_output=True
    ).stdout
    tests = [Test(entry) for entry in json.loads(listing)["tests"]]
    for test in tests:
        passed, output = test.run()
        if not passed:
            sys.exit(f"mutate: {test.name} fails on the unbroken code\n{output.decode(errors='replace')}")
    return sorted(tests, key=lambda test: test.seconds)


def judge(site, tests, program):
    """What becomes of a mutation: the test that caught it, SURVIVED, or why it doesn't count."""
    code = (ROOT / site.path).read_text()
    broken = code[:site.start] + site.new + code[site.start + len(site.old):]
    (TREE / site.path).write_text(broken)
    for test in tests:
        if not build(OBJECTS, test.name)[0]:
            return NO_PROGRAM
        if not test.run()[0]:
            return test.name
    return SAME_PROGRAM if release_program() == program else SURVIVED


# ---- The report ----


def known_survivors():
    """The reasons in the list of survivors, by file and routine, line before and line after."""
    reasons = {}
    for block in (ROOT / SURVIVORS).read_text().split("\n\n"):
        lines = [line.strip() for line in block.split("\n") if line and not line.startswith("#")]
        if lines:
            reasons[(lines[0], lines[1][2:], lines[2][2:])] = " ".join(lines[3:])
    return reasons


def print_site(site, remark):
    print(f"\n{site.id}, line {site.line}\n{site.path} {site.routine}\n  - {site.before}\n  + {site.after}\n    {remark}")


def report(results, uncounted):
    """Prints the figures and the survivors; True if enough of what makes a difference is caught."""
    reasons = known_survivors()
    caught = [(site, outcome) for site, outcome in results if outcome != SURVIVED]
    survivors = [site for site, outcome in results if outcome == SURVIVED]
    alike = sum(reasons.get(site.key(), "").startswith(ALIKE) for site in survivors)
    percentage = 100 * len(caught) / max(len(results) - alike, 1)
    print(f"mutations   {len(results):4}")
    print(f"caught      {len(caught):4}   {100 * len(caught) / max(len(results), 1):.1f} %")
    for name in sorted({outcome for _, outcome in caught}):
        print(f"  by {name:<14} {sum(outcome == name for _, outcome in caught):4}")
    print(f"survivors   {len(survivors):4}")
    print(f"  listed as alike   {alike:4}   without them {percentage:.1f} % are caught")
    for reason in (NO_PROGRAM, SAME_PROGRAM):
        print(f"not counted {uncounted.count(reason):4}   {reason}")
    for site in survivors:
        print_site(site, reasons.get(site.key(), "no reason known"))
    for site, _ in caught:
        if site.key() in reasons:
            print_site(site, f"is listed in {SURVIVORS}, but caught")
    return percentage >= WANTED_PERCENTAGE


def main(arguments):
    only = ""
    if arguments[:1] == ["--only"]:
        only = arguments[1] if len(arguments) > 1 else "-"
        arguments = arguments[2:]
    if len(arguments) > 2 or not all(argument.isdigit() for argument in arguments):
        sys.exit("tests/mutate [--only FILE|ID,ID...] [COUNT] [SEED]")
    count, seed = [int(argument) for argument in arguments] + [DEFAULT_COUNT, DEFAULT_SEED][len(arguments):]

    os.nice(10)
    order = select(only, seed)
    if not order:
        sys.exit("mutate: there is nothing to break")
    tests = prepare()
    program = release_program()
    results = []
    uncounted = []
    wanted = shares(order, count)
    for path, sites in order.items():
        # Another site replaces one that doesn't count.
        target = len(results) + wanted[path]
        for site in sites:
            if len(results) == target:
                break
            outcome = judge(site, tests, program)
            if outcome in (NO_PROGRAM, SAME_PROGRAM):
                uncounted.append(outcome)
            else:
                results.append((site, outcome))
            print(f"{len(results)} {site.id} {site.path}:{site.line} {outcome}", file=sys.stderr, flush=True)
        shutil.copy(ROOT / path, TREE / path)
        os.utime(TREE / path)
    return 0 if report(results, uncounted) else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
