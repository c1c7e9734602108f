"""What every journey says: what should hold, and how it is made."""
import argparse
import contextlib
import pathlib
import sys
import traceback

from person import Failure, Person

SKIPPED = 77


def check(condition, claim):
    """Raises a Failure that says what should hold."""
    if not condition:
        raise Failure(claim)


def equal(actual, expected, what):
    if actual != expected:
        raise Failure(f"{what}: {actual!r} instead of {expected!r}")


def skip(why):
    """Ends the journey as one that could not be made here."""
    print(f"Skipped: {why}")
    sys.exit(SKIPPED)


def options():
    parser = argparse.ArgumentParser(description="One journey through the program.")
    parser.add_argument("--program", required=True, help="the program to be worked with")
    parser.add_argument("--tools", help="folder of the programs that journeys need beside it")
    parser.add_argument("--films", help="folder of real films, which may be absent")
    parser.add_argument("--pictures", required=True, help="folder for what was seen")
    parser.add_argument("--scale", type=float, default=1.0, help="the toolkit's scale factor")
    parser.add_argument("--window", metavar="WIDTHxHEIGHT", help="another size for first windows; "
                        "the least if it is too small",
                        type=lambda text: tuple(int(side) for side in text.split("x")))
    parser.add_argument("--look", choices=("light", "dark"), help="what the desktop's portal says")
    return parser


def travel(journey, chosen=None):
    """Makes a journey: a function of a Person. On failure it tells what was to be seen."""
    chosen = chosen or options().parse_args()
    person = Person(chosen.program, chosen.pictures, chosen.scale, chosen.tools, chosen.window)
    person.films = pathlib.Path(chosen.films) if chosen.films else None
    try:
        if chosen.look:
            person.set_look(chosen.look)
        journey(person)
    except Exception:
        traceback.print_exc()
        with contextlib.suppress(Exception):
            print("What was seen last:", person.look("failed"))
        for program in person.programs:
            print(f"--- what the program said:\n{program.log.read_text(errors='replace')}")
            with contextlib.suppress(Exception):
                print("--- what it showed:\n" + program.tree())
        sys.exit(1)
    finally:
        person.leave()
