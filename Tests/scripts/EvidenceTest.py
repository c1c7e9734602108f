"""What scripts/evidence makes of claims that hold, and of claims that do not."""
import contextlib
import importlib.machinery
import importlib.util
import io
import tempfile
import unittest
from pathlib import Path

SCRIPTS = Path(__file__).resolve().parents[2] / "scripts"


def loaded(name):
    """A script without a suffix, as a module."""
    loader = importlib.machinery.SourceFileLoader(name, str(SCRIPTS / name))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader(name, loader))
    loader.exec_module(module)
    return module


evidence = loaded("evidence")
Claim, Trial = evidence.claims.Claim, evidence.claims.Trial


def saying(command, bound="< 5", **other):
    return Trial(command, r"^grew (?P<growth>.*?) MiB$", "{growth} MiB", {"growth": bound}, **other)


def claim(command, bound="< 5", name="soak", short=None, **other):
    return Claim(name, "Nothing grows.", saying(command, bound, **other), short and saying(short, bound))


class EvidenceTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.page = self.folder / "evidence.md"

    def run_on(self, *table, options=()):
        """Exit status, and what went to the standard output."""
        said = io.StringIO()
        with contextlib.redirect_stdout(said), contextlib.redirect_stderr(io.StringIO()):
            status = evidence.main(list(options), table, self.page)
        return status, said.getvalue()

    def cells(self, name="soak"):
        rows = [row for row in self.page.read_text().splitlines() if row.startswith(f"| **{name}** ")]
        self.assertEqual(len(rows), 1)
        return evidence.cells_of(rows[0])

    def assert_fails(self, one, because):
        self.assertEqual(self.run_on(one)[0], 1)
        self.assertIn(evidence.FAILS, self.cells()[3])
        self.assertIn(because, self.cells()[3])

    def test_a_claim_that_holds_tells_what_was_printed_and_when(self):
        self.assertEqual(self.run_on(claim("echo grew +1.25 MiB"))[0], 0)
        sentence, command, bounds, seen, when = self.cells()
        self.assertEqual([sentence, command, bounds, seen],
                         ["**soak** Nothing grows.", "`echo grew +1.25 MiB`", "growth < 5", "+1.25 MiB"])
        self.assertRegex(when, r"^\d{4}-\d\d-\d\d, ([0-9a-f]{7,}|unknown)( with changes)?$")

    def test_a_command_that_fails_fails_the_claim_whatever_it_printed(self):
        self.assert_fails(claim("echo grew 1 MiB; exit 3"), "exit status 3")
        self.assert_fails(claim("/nonexistent"), "exit status 127")

    def test_a_figure_out_of_bounds_fails_the_claim(self):
        self.assert_fails(claim("echo grew 5 MiB"), "growth 5 is not < 5")
        self.assert_fails(claim("echo grew 3 9 MiB"), "growth 9 is not < 5")
        self.assert_fails(claim("echo grew -30 MiB", ">= -20 and <= 20"), "growth -30 is not >= -20")
        self.assert_fails(claim("echo grew 1 MiB; echo grew 7 MiB"), "growth 7 is not < 5")

    def test_no_figure_fails_the_claim(self):
        self.assert_fails(claim("true"), "no figure")
        self.assert_fails(claim("echo grew much MiB"), "growth has no figure")
        self.assert_fails(claim("echo grew 1 MiB", times=2), "1 figures, not 2")

    def test_a_test_that_was_left_out_fails_the_claim_unless_it_may_be(self):
        said = "echo grew 1 MiB; echo '[  SKIPPED ] A.B (0 ms)'"
        self.assert_fails(claim(said), "left out")
        self.assertEqual(self.run_on(claim(said, may_leave_out=True))[0], 0)
        self.assert_fails(claim("echo grew 1 MiB; echo '1/1 Test #1: A ........***Skipped   0.01 sec'"), "left out")

    def test_what_takes_too_long_is_ended_with_all_that_it_started(self):
        mark = self.folder / "mark"
        self.assert_fails(claim(f"(sleep 2; touch {mark}) & echo grew 1 MiB; sleep 60", seconds=1), "none within 1 s")
        self.assertEqual(self.run_on(claim("sleep 2; echo grew 1 MiB"))[0], 0)
        self.assertFalse(mark.exists())

    def test_a_build_that_fails_fails_the_claim(self):
        one = claim("echo grew 1 MiB", builds=(("nonexistent", "nothing"),))
        original = evidence.build_command
        evidence.build_command = lambda builds: "exit 4"
        self.addCleanup(setattr, evidence, "build_command", original)
        self.assert_fails(one, "exit status 4 of the build")

    def test_a_bound_may_be_another_figure(self):
        for ours, expected in ((9, 0), (7, 1)):
            trial = Trial(f"echo theirs 8 ours {ours}", r"theirs (?P<theirs>\d+) ours (?P<ours>\d+)", "{ours}",
                          {"ours": "> theirs"})
            self.assertEqual(self.run_on(Claim("soak", "Better.", trial))[0], expected)

    def test_a_claim_that_is_not_run_keeps_its_line(self):
        table = [claim("echo grew 1 MiB"), claim("echo grew 2 MiB", name="other")]
        self.run_on(*table)
        self.page.write_text(self.page.read_text().replace("2 MiB | 2", "2 MiB | once, 2"))
        kept = self.cells("other")
        self.assertIn("once", kept[4])
        self.assertEqual(self.run_on(*table, options=["soak"])[0], 0)
        self.assertEqual(self.cells("other"), kept)

    def test_what_was_seen_by_another_command_is_not_kept(self):
        self.run_on(claim("echo grew 1 MiB"), claim("echo grew 2 MiB", name="other"))
        table = [claim("echo grew 1 MiB"), claim("echo grew 3 MiB", name="other")]
        self.run_on(*table, options=["soak"])
        self.assertEqual(self.cells("other")[3:], ["not run yet", ""])

    def test_a_claim_that_fails_replaces_its_line(self):
        table = [claim(f"cat {self.folder}/said")]
        (self.folder / "said").write_text("grew 1 MiB\n")
        self.run_on(*table)
        (self.folder / "said").write_text("nothing\n")
        self.assertEqual(self.run_on(*table)[0], 1)
        self.assertIn("no figure", self.cells()[3])

    def test_the_short_form_is_printed_and_leaves_the_page(self):
        table = [claim("echo grew 1 MiB", short="echo grew 2 MiB"), claim("exit 1", name="long")]
        status, said = self.run_on(*table, options=["--short"])
        self.assertEqual(status, 0)
        self.assertIn("| `echo grew 2 MiB` | growth < 5 | 2 MiB |", said)
        self.assertIn("| `exit 1` | growth < 5 | not in the short form |", said)
        self.assertFalse(self.page.exists())
        self.assertEqual(self.run_on(claim("true", short="echo grew 8 MiB"), options=["--short"])[0], 1)

    def test_a_short_run_leaves_the_line_of_a_whole_one_unless_it_fails(self):
        table = [claim("echo grew 1 MiB", short=f"cat {self.folder}/said")]
        short = ["--short", "--page", str(self.page)]
        (self.folder / "said").write_text("grew 2 MiB\n")
        self.run_on(*table, options=short)
        self.assertEqual(self.cells()[3], "2 MiB")
        self.run_on(*table)
        self.run_on(*table, options=short)
        self.assertEqual(self.cells()[3], "1 MiB")
        (self.folder / "said").write_text("grew 9 MiB\n")
        self.assertEqual(self.run_on(*table, options=short)[0], 1)
        self.assertIn("growth 9 is not < 5", self.cells()[3])

    def test_a_short_run_takes_the_line_of_what_was_never_run(self):
        table = [claim("echo grew 1 MiB", short="echo grew 2 MiB"), claim("echo grew 3 MiB", name="other")]
        self.run_on(*table, options=["other"])
        self.assertEqual(self.cells()[3], "not run yet")
        self.run_on(*table, options=["--short", "--page", str(self.page), "soak"])
        self.assertEqual(self.cells()[3], "2 MiB")

    def test_a_command_that_two_claims_rest_on_runs_once(self):
        command = f"echo x >>{self.folder}/runs; echo grew 1 MiB"
        self.assertEqual(self.run_on(claim(command), claim(command, name="other"))[0], 0)
        self.assertEqual((self.folder / "runs").read_text(), "x\n")

    def test_bars_in_commands_do_not_break_the_table(self):
        command = "echo grew 1 MiB | cat"
        for _ in range(2):
            self.assertEqual(self.run_on(claim(command))[0], 0)
            self.assertEqual(self.cells()[1], f"`{command}`")
        self.run_on(claim(command), claim("echo grew 1 MiB", name="other"), options=["other"])
        self.assertEqual(self.cells()[3], "1 MiB")

    def test_an_unknown_claim_is_refused(self):
        with self.assertRaises(SystemExit) as refused, contextlib.redirect_stderr(io.StringIO()):
            evidence.main(["nothing"], [claim("true")], self.page)
        self.assertNotEqual(refused.exception.code, 0)

    def test_every_figure_of_the_claims_is_bound_or_told_and_every_name_its_own(self):
        table = evidence.claims.CLAIMS
        self.assertEqual(len({one.name for one in table}), len(table))
        for one in table:
            for trial in filter(None, (one.whole, one.short)):
                groups = evidence.re.compile(trial.figure).groupindex
                self.assertTrue(groups, one.name)
                self.assertLessEqual(set(trial.bounds), set(groups), one.name)
                trial.seen.format(**dict.fromkeys(groups, ""))

    def test_the_page_in_the_repository_has_a_line_for_each_claim(self):
        page = SCRIPTS.parent / "docs/evidence.md"
        self.assertEqual(list(evidence.lines_of(page.read_text())), [one.name for one in evidence.claims.CLAIMS])


class LicencesTest(unittest.TestCase):
    def setUp(self):
        self.licences = loaded("licences")
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.page = Path(folder.name) / "dependencies.md"
        self.text = self.licences.PAGE.read_text()
        self.licences.PAGE = self.page

    def status_with(self, text):
        self.page.write_text(text)
        told = io.StringIO()
        with contextlib.redirect_stdout(io.StringIO()), contextlib.redirect_stderr(told):
            return self.licences.main("/bin/true"), told.getvalue()

    def test_a_library_in_its_row_is_known(self):
        self.assertEqual(self.status_with(self.text), (0, ""))

    def test_a_library_in_no_row_is_told(self):
        status, told = self.status_with("\n".join(line for line in self.text.splitlines() if "| glibc" not in line))
        self.assertEqual(status, 1)
        self.assertIn("libc.so.6 is in no row", told)

    def test_another_version_and_another_licence_are_told(self):
        for wrong, expected in (("| glibc | 2.3 |", "not 2.3"), ("| glibc | 2.36 | MIT", "should be under LGPL-2.1+")):
            right = "| glibc | 2.36 |" if wrong.endswith("2.3 |") else "| glibc | 2.36 | LGPL-2.1+"
            status, told = self.status_with(self.text.replace(right, wrong))
            self.assertEqual(status, 1)
            self.assertIn(expected, told)


if __name__ == "__main__":
    unittest.main()
