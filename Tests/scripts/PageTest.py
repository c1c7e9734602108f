"""The page of figures, made from figures that are known."""
import contextlib
import functools
import io
import json
import re
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "Benchmarks"))
import page  # noqa: E402

# Asked once: importing what knows its version takes a second.
for asked in ("version", "commit"):
    setattr(page.provenance, asked, functools.cache(getattr(page.provenance, asked)))

COPY = "floor: a copy of the picture"
STYLES = {"sketch": 40, "comic": 60, "poster": 30, COPY: 2, "peer: bilateral filter, d = 9": 80}


def figures(benchmark, values, case="1 thread", unit="ms"):
    return [{"benchmark": benchmark, "case": case, "figure": name, "value": value, "unit": unit}
            for name, value in values.items()]


class PageTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.page = Path(folder.name) / "page.md"
        self.json = Path(folder.name) / "figures.json"

    def write(self, measured, *options):
        """Exit status and complaint."""
        self.json.write_text(json.dumps(measured))
        told = io.StringIO()
        with contextlib.redirect_stderr(told):
            status = page.main([str(self.page), str(self.json), *options])
        return status, told.getvalue()

    def rows(self, of=""):
        return [[text.strip() for text in line.strip("|").split("|")]
                for line in self.page.read_text().splitlines() if line.startswith("| " + of)]

    def test_each_measure_stands_beside_its_peer_and_its_floor(self):
        self.assertEqual(self.write(figures("styles", STYLES)), (0, ""))
        self.assertIn(["sketch (1 thread)", "40.0 ms", "cv::bilateralFilter: 80.0 ms", "0.500", "2.00 ms", "20.0"],
                      self.rows())

    def test_every_figure_is_there_whether_it_is_compared_or_not(self):
        self.write(figures("styles", STYLES | {"the four together": 77}))
        self.assertIn(["the four together", "77.0 ms"], self.rows())

    def test_a_section_tells_when_of_what_and_where_but_no_host_and_no_path(self):
        self.write(figures("styles", STYLES), "--load", "0.25")
        told = self.page.read_text()
        self.assertRegex(told, r"Measured \d{4}-\d\d-\d\d, program of commit ([0-9a-f]{7,}|unknown)( with changes)?, "
                               r"on .*\d+ cores?, [\d.]+ GiB, Linux [\d.]+, .*; load 0\.25 before\.")
        host = Path("/etc/hostname").read_text().strip() if Path("/etc/hostname").exists() else ""
        for secret in (host, str(page.provenance.ROOT), str(self.page.parent), str(Path.home()) + "/"):
            self.assertFalse(secret and secret in told, secret)

    def test_sections_of_others_stay_to_the_byte(self):
        self.write(figures("styles", STYLES))
        before = page.sections_of(self.page.read_text().replace("Measured 2", "Measured in 2"))
        self.page.write_text(self.page.read_text().replace("Measured 2", "Measured in 2"))
        edges = {"shrink 20": 10, "shrink 2.4": 6, "outline 20": 10, "feather 10": 6, COPY: 1,
                 "cv::erode, ellipse of 41, opacity alone": 20, "cv::GaussianBlur, 10, opacity alone": 15}
        self.assertEqual(self.write(figures("edges", edges))[0], 0)
        after = page.sections_of(self.page.read_text())
        self.assertEqual(list(after), ["edges", "styles"])
        self.assertEqual(after["styles"], before["styles"])

    def test_measured_again_a_section_is_replaced(self):
        self.write(figures("styles", STYLES))
        self.write(figures("styles", STYLES | {"sketch": 33}))
        self.assertEqual([row[1] for row in self.rows("sketch")], ["33.0 ms", "33.0 ms"])

    def test_the_page_written_twice_is_the_same(self):
        self.write(figures("styles", STYLES))
        once = self.page.read_text()
        self.write(figures("styles", STYLES))
        self.assertEqual(self.page.read_text(), once)

    def test_a_figure_that_is_missing_is_told_and_the_page_left(self):
        self.write(figures("styles", STYLES))
        once = self.page.read_text()
        for missing in (COPY, "comic", "peer: bilateral filter, d = 9"):
            status, told = self.write(figures("styles", {name: value for name, value in STYLES.items()
                                                         if name != missing}))
            self.assertEqual(status, 1)
            self.assertIn(missing, told)
        self.assertEqual(self.page.read_text(), once)

    def test_a_short_form_says_so_and_may_leave_measures_out_but_no_peer(self):
        few = {name: value for name, value in STYLES.items() if name != "comic"}
        self.assertEqual(self.write(figures("styles", few), "--short")[0], 0)
        self.assertIn("short form: few samples", self.page.read_text())
        del few[COPY]
        self.assertEqual(self.write(figures("styles", few), "--short")[0], 1)

    def test_a_floor_may_be_a_case_of_its_own(self):
        waits = {"longest wait for the loop": 12, "99 of 100 waits below": 6}
        measured = (figures("window", {"ours, median": 300, "a bare window, median": 100}, "start, offscreen")
                    + figures("window", waits, "saving"))
        self.assertEqual(self.write(measured)[0], 1)
        calm = {name: value / 4 for name, value in waits.items()}
        self.assertEqual(self.write(measured + figures("window", calm, "doing nothing")), (0, ""))
        self.assertIn(["longest wait (saving)", "12.0 ms", "", "", "3.00 ms", "4.00"], self.rows())
        self.assertEqual(self.rows("longest wait (doing nothing)"), [])

    def test_what_is_far_below_its_floor_was_not_done_and_is_refused(self):
        status, told = self.write(figures("styles", STYLES | {"comic": 0.005}))
        self.assertEqual(status, 1)
        self.assertIn("comic", told)
        self.assertFalse(self.page.exists())

    def test_nothing_measured_leaves_the_page(self):
        self.write(figures("styles", STYLES))
        once = self.page.read_text()
        self.assertEqual(self.write([]), (0, ""))
        self.assertEqual(self.page.read_text(), once)

    def test_no_value_and_an_unknown_benchmark_are_refused(self):
        for measured in (figures("styles", STYLES | {"sketch": None}), figures("walking", {"a": 1})):
            self.assertEqual(self.write(measured)[0], 1)
        self.assertFalse(self.page.exists())

    def test_cases_with_the_same_figures_share_a_table(self):
        self.write(figures("styles", STYLES) + figures("styles", {name: value / 2 for name, value in STYLES.items()},
                                                       "2 threads"))
        self.assertIn(["sketch", "40.0 ms", "20.0 ms"], self.rows())

    def test_three_digits_count(self):
        for value, expected in ((0, "0"), (0.01234, "0.0123"), (1.5, "1.50"), (12.345, "12.3"), (1234.5, "1234"),
                                (-5.2142, "-5.21"), (0.99999, "1.000")):
            self.assertEqual(page.shown(value), expected)

    def test_every_benchmark_of_the_script_has_a_section(self):
        script = (page.provenance.ROOT / "bench").read_text()
        self.assertEqual([each.name for each in page.BENCHMARKS],
                         re.search(r"^all=\((.*)\)", script, re.M)[1].split())


if __name__ == "__main__":
    unittest.main()
