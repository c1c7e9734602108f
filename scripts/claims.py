"""What the program claims, and how each claim is shown; scripts/evidence runs it."""
import re
from dataclasses import dataclass, field


@dataclass(frozen=True)
class Trial:
    """One command, and how a figure is read from what it prints."""
    command: str
    figure: str  # a regular expression with named groups; lines begin with ^ and end with $
    seen: str  # what the page says, of the groups
    bounds: dict = field(default_factory=dict)  # group: relations and limits; every number of the group keeps to them
    builds: tuple = ()  # of (preset, targets), before
    times: int = 1  # how often the figure is printed at least
    may_leave_out: bool = False  # whether tests may be skipped
    seconds: int = 3600


@dataclass(frozen=True)
class Claim:
    name: str
    sentence: str
    whole: Trial
    short: Trial | None = None  # none: not in the short form
    step: str = ""  # of CI, where that shows it in a form of its own


def gtest(program, option=""):
    """A program of tests, of which each case passes."""
    folder, name = program.split("/")
    return dict(command=f"build/release/Tests/{folder}/{name} {option}".strip(),
                builds=(("release", name),))


EACH_CASE = r"^\[       OK \] (?P<case>[\w./]+) \(\d+ ms\)$"
PASSED = r"^\[  PASSED  \] (?P<cases>\d+) test"
TESTS = r"tests passed, (?P<failed>\d+) tests failed out of (?P<tests>\d+)"
FILMS = r"^(?P<wrong>\d+) of (?P<films>\d+) films wrong$"
CLIPS = "build/release/Tests/Media/clips"


def row(name, group):
    """A row of a benchmark's table; its figures are those of all cases."""
    return rf"^{name} +(?P<{group}>[-\d].*?)$"


def bench(benchmark, figure, seen, **bounds):
    """Writes the benchmark's section of the page of figures, too."""
    return Trial(f"./bench {benchmark} --page docs/figures.md", figure, seen, bounds, seconds=5400)


def short_bench(benchmark, figure, seen, **bounds):
    """Other work may run beside the short form: its bounds are of what is right, and of no time."""
    told = {name: ">= 0" for name in re.compile(figure).groupindex}
    return Trial(f"./bench --short {benchmark}", figure, seen, told | bounds, seconds=1200)


STEP_BACK = ("stepping", row("step back, mpv / ours", "ratio"), "mpv / ours {ratio}")
EXACT_SEEK = ("stepping",
              row("exact seek, mpv / ours", "ratio") + ".*" + row("exact seek, ours / floor", "floor"),
              "mpv / ours {ratio}; ours / libavcodec alone {floor}")
GRABS = ("grab",
         row(r"ours, opened each time / floor \(libavcodec alone\): of medians", "floor") + ".*"
         + row("ours, kept open: pictures compared", "compared") + ".*"
         + row("ours, kept open: wrong pictures", "wrong"),
         "{wrong} wrong of {compared}; ours / libavcodec alone {floor}")
MEMORY = ("scale", row("resident before any", "before") + ".*" + row("resident, player's frames apart", "resident"),
          "{resident} MiB, {before} before any")
PREVIEWS = ("window", row("all styles after a slider's rest, median", "median"), "median {median} ms")
START = ("window", row("ours, median", "ours") + ".*" + row("ratio", "ratio"),
         "{ours} ms, {ratio} of a bare window's time")
NO_STALL = ("window", row("longest wait for the loop", "wait") + ".*" + row("of the processor's time, most", "most"),
            "most {most} ms; longest waits by the clock {wait} ms")
PNG = ("export", row("PNG, Qt's writer / ours", "ratio") + ".*" + row("PNG's size, ours / Qt's writer", "size"),
       "Qt's writer / ours: time {ratio}, size ours / Qt's {size}")
SOAK = (r"^sound: (?P<growth>\S+) MiB \(\S+ allocated\), (?P<threads>\S+) threads, (?P<descriptors>\S+) descriptors, "
        r"(?P<files>\S+) files$")
SOAK_SEEN = "{growth} MiB, {threads} threads, {descriptors} descriptors, {files} files"
SOAK_BOUNDS = {"growth": "< 5", "threads": "<= 0", "descriptors": "<= 0", "files": "= 0"}


def together(option, times):
    return Trial(f"build/release/Tests/Media/FlashAndBeepTest{option}",
                 r"^\[ measured \] flash after beep: (?P<first>\S+) to (?P<last>\S+) ms, median (?P<median>\S+) ms$",
                 "median {median} ms, all from {first} to {last}", {"median": ">= -20 and <= 20"},
                 (("release", "FlashAndBeepTest"),), times)


def damaged_films(count):
    return Trial(f"scripts/damaged-films {count}",
                 r"^(?P<films>\d+) damaged films: (?P<opened>\d+) gave a picture, (?P<refused>\d+) were refused, "
                 r"(?P<wrong>\d+) went wrong; slowest (?P<seconds>\S+) s, largest (?P<memory>\d+) MiB$",
                 "{films} films: {opened} gave a picture, {refused} were refused, {wrong} went wrong; "
                 "slowest {seconds} s, largest {memory} MiB", {"wrong": "= 0", "films": f"= {count}"}, seconds=36000)


def licences():
    return Trial("scripts/licences build/release/Stillwick/stillwick",
                 r"^licences: (?P<libraries>\d+) libraries, (?P<unknown>\d+) unknown$",
                 "{libraries} libraries, {unknown} unknown", {"libraries": "> 10", "unknown": "= 0"},
                 (("release", "stillwick"),))


def soak(lives):
    return Trial(f"build/release/Tests/Stillwick/Soak {lives}", SOAK, SOAK_SEEN, SOAK_BOUNDS,
                 (("release", "Soak"),), seconds=7200)


def writing(kills):
    # The table's head says how often it was killed; a file that was lost would have made it fail.
    return Trial(f"scripts/prove-writing build/release/Stillwick/stillwick {kills}",
                 r"disk full +folder read-only +folder gone +symbolic link +killed \((?P<kills>\d+) times\)$",
                 "old or new, whole and told, under every trouble and {kills} kills",
                 {"kills": f"> {kills}"}, (("release", "stillwick"),))


CLAIMS = (
    Claim("exact-pictures",
          "The picture exported at a time is the frame shown then, bit for bit, in whatever order they are asked for.",
          Trial("Tests/Media/prove-all build/release", FILMS, "{wrong} of {films} films wrong",
                {"wrong": "= 0", "films": "> 0"}, (("release", "prove-films Tests/Media/clips/stamp"),), times=3,
                may_leave_out=True, seconds=14400),
          Trial(f"build/release/Tests/Media/prove-films --frames 8 {CLIPS}/films", FILMS,
                "{wrong} of {films} films wrong", {"wrong": "= 0", "films": "> 0"},
                (("release", "prove-films Tests/Media/clips/stamp"),), may_leave_out=True)),
    Claim("seen-is-captured",
          "After any walk of steps, seeks and playing, the picture that a capture takes is the one that is shown.",
          Trial(f"build/release/Tests/Media/walk-films --operations 500 {CLIPS}/films", FILMS,
                "{wrong} of {films} films wrong", {"wrong": "= 0", "films": "> 0"},
                (("release", "walk-films Tests/Media/clips/stamp"),), may_leave_out=True, seconds=7200),
          step="./test"),
    Claim("step-back", "A step back takes a fiftieth of mpv's time at most.",
          bench(*STEP_BACK, ratio="> 50"), short_bench(*STEP_BACK)),
    Claim("exact-seek",
          "An exact seek is quicker than mpv's, whose picture is not converted yet, and little more than decoding.",
          bench(*EXACT_SEEK, ratio="> 1.2", floor="< 1.3"), short_bench(*EXACT_SEEK)),
    Claim("random-grabs", "Grabs at random times are exact, and little more than decoding, without an index.",
          bench(*GRABS, wrong="= 0", compared="> 10", floor="< 1.5"), short_bench(*GRABS, wrong="= 0")),
    Claim("sound", "What is heard and what is seen come together: in the median within 20 ms.",
          together(" --gtest_also_run_disabled_tests", 2), together("", 1)),
    Claim("cut-outs", "Cut-outs come nearer to masks made by hand than GrabCut from an inset rectangle.",
          bench("cutout",
                r"^\| GrabCut[^|]*\| (?P<grabcut>\S+) \|.*^\| Stillwick \| (?P<maxF>\S+) \| (?P<error>\S+) \| "
                r"(?P<overlap>\S+) \| (?P<measure>\S+) \| (?P<boundary>\S+) \| (?P<precision>\S+) \|",
                "max F {maxF} (GrabCut {grabcut}), error {error}, overlap {overlap}, S {measure}, boundary {boundary}, "
                "AP50 of subjects apart {precision}",
                maxF="> grabcut", grabcut="> 0")),
    Claim("colours", "Well inside a cut-out, colours are the film's own to the bit.",
          Trial(figure=PASSED, seen="{cases} cases", bounds={"cases": ">= 5"}, **gtest("Vision/EdgeColoursTest")),
          step="./test"),
    Claim("memory",
          "Memory does not follow the number of captures: a thousand at hand, ten thousand in a project (the player's "
          "frames apart).",
          bench(*MEMORY, resident="< 512", before="> 0"), short_bench(*MEMORY, resident="< 512")),
    Claim("previews", "All styles follow an edge slider's rest within a quarter of a second.",
          bench(*PREVIEWS, median="< 250"), short_bench(*PREVIEWS)),
    Claim("start", "The window is painted within 0.4 s of the program's start.",
          bench(*START, ours="< 400", ratio="> 0"), short_bench(*START)),
    Claim("no-stall", "Nothing that the window does takes 16 ms of the processor's time in its event loop.",
          bench(*NO_STALL, most="< 16", wait="> 0"), short_bench(*NO_STALL)),
    Claim("png", "PNG files take less than half of the time of Qt's writer, and are at most 6 % larger.",
          bench(*PNG, ratio="> 2", size="< 1.06"), short_bench(*PNG, size="< 1.06")),
    Claim("kill",
          "A project is whole, old or new, after a thousand kills at any moment, and the next save clears away.",
          Trial(figure=EACH_CASE, seen="{case}", times=2, **gtest("Stillwick/ProjectKillTest")),
          step="./test"),
    Claim("faults", "Whichever system call of a save fails, the project is whole and the failure is told.",
          Trial(figure=EACH_CASE, seen="{case}", **gtest("Stillwick/ProjectFaultTest")),
          step="./test"),
    Claim("writing",
          "No file is lost or half written on a full disk, in a folder read-only or gone, through a link, or under "
          "kill -9.", writing(200), writing(20)),
    Claim("no-network", "No command and no film makes a socket of the network.",
          Trial(figure=PASSED, seen="{cases} cases under strace", bounds={"cases": ">= 10"},
                **gtest("Stillwick/NoNetworkTest")),
          Trial(figure=PASSED, seen="{cases} cases under strace", bounds={"cases": "= 3"},
                **gtest("Stillwick/NoNetworkTest", "--gtest_filter=NoNetworkTest.*"))),
    Claim("damaged-films",
          "A damaged film gives a whole picture or a refusal in one sentence, in time, in bounded memory.",
          damaged_films(20000), damaged_films(200)),
    Claim("fuzz", "Films, projects, bookmarks and times of any bytes crash nothing and hang nothing.",
          Trial("scripts/fuzz 600", r"^stat::number_of_executed_units: +(?P<inputs>\d+)$", "{inputs} inputs",
                {"inputs": "> 100"}, times=4),
          step="scripts/fuzz 60"),
    Claim("soak", "A thousand windows opened, used and closed leave nothing in the process.", soak(1000), soak(60)),
    Claim("monkey", "An hour of random hands on the windows breaks no rule, under the address sanitizer.",
          Trial("build/asan/Tests/Monkey/stillwick-monkey --seconds 3600 --seed 11",
                r"^monkey: seed \d+, (?P<things>\d+) things done in \d+ s, all well$", "{things} things done",
                {"things": "> 1000"}, (("asan", "stillwick-monkey"),), seconds=7200),
          step="./test"),
    Claim("journeys", "A person's ways through the program, with a real pointer and keyboard, and with a screen reader "
          "alone.",
          Trial("ctest --preset release -L journeys", TESTS, "{tests} journeys, {failed} failed",
                {"failed": "= 0", "tests": ">= 11"}, (("release", "all"),)),
          step="./test"),
    Claim("package", "The Debian package is installed in a clean Debian, used, and purged without a trace.",
          Trial("scripts/try-package", r"^try-package: (?P<end>purged, and nothing is left)$", "{end}"),
          step="scripts/try-package"),
    Claim("sanitizers", "No test meets a report of the address or undefined-behaviour sanitizer.",
          # Two tests that make memory or open files scarce skip themselves: the sanitizer needs some of its own.
          Trial("ctest --preset asan -j2", TESTS, "{tests} tests, {failed} failed",
                {"failed": "= 0", "tests": "> 500"}, (("asan", "all"),), may_leave_out=True, seconds=14400),
          step="./test"),
    Claim("threads", "No test meets a race that the thread sanitizer sees.",
          Trial("scripts/threads --all", TESTS, "{tests} tests, {failed} failed", {"failed": "= 0", "tests": "> 500"},
                may_leave_out=True, seconds=14400),
          step="scripts/threads"),
    Claim("licences", "Every library that the program links is in docs/dependencies.md, with its licence.",
          licences(), licences()),
)
