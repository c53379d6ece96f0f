#!/usr/bin/env python3
"""The page of "tavctl report" in a browser: what it shows, by mouse, by keyboard, dark and on paper.

    browserTest.py SOURCE-FOLDER TAVCTL
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select

SOURCE, TAVCTL = pathlib.Path(sys.argv[1]), sys.argv[2]
SAMPLES = SOURCE / "samples"
# A model that would take the page over, were it more than text.
EVIL = "</script><script>document.title='taken'</script><img src=x onerror=\"document.title='taken'\">"

# Of each text that is seen: how it stands out from what is behind it.
CONTRASTS = """
const light = (color) => {
    const [r, g, b] = color.map((each) => each / 255)
        .map((each) => each <= 0.04045 ? each / 12.92 : ((each + 0.055) / 1.055) ** 2.4);
    return 0.2126 * r + 0.7152 * g + 0.0722 * b;
};
const parts = (text) => text.match(/[\\d.]+/g).map(Number);
const behind = (element) => {
    for (; element; element = element.parentElement) {
        const color = parts(getComputedStyle(element).backgroundColor);
        if (color.length < 4 || color[3] > 0) return color.slice(0, 3);
    }
    return [255, 255, 255];
};
const texts = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
const found = [];
while (texts.nextNode()) {
    const element = texts.currentNode.parentElement;
    if (!texts.currentNode.data.trim() || !element.checkVisibility() || element.closest("script,noscript"))
        continue;
    const [a, b] = [light(parts(getComputedStyle(element).color).slice(0, 3)), light(behind(element))];
    found.push([(Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05), texts.currentNode.data]);
}
return found;
"""


def check(condition, what):
    if not condition:
        raise AssertionError(what)


def tavctl(*words, status=0):
    ran = subprocess.run([TAVCTL, *map(str, words)], capture_output=True, text=True, check=False)
    check(ran.returncode == status, f"{words}: {ran.returncode} {ran.stderr}")


class Page:
    """The report in a browser that may ask no network for anything."""

    def __init__(self, folder):
        options = webdriver.ChromeOptions()
        options.binary_location = "/usr/bin/chromium"
        for each in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                     "--no-proxy-server", "--host-resolver-rules=MAP * ~NOTFOUND",
                     "--disable-background-networking", f"--user-data-dir={folder}/profile"):
            options.add_argument(each)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        self.driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
        self.driver.set_window_size(1200, 900)

    def open(self, file, place=""):
        self.driver.get("about:blank")
        self.driver.get(f"file://{file}{place}")

    def run(self, script, *values):
        return self.driver.execute_script(script, *values)

    def one(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def texts(self, selector):
        return [each.text for each in self.all(selector)]

    def keys(self, *keys):
        self.driver.switch_to.active_element.send_keys(*keys)

    def active(self):
        return self.run("return document.activeElement.id || document.activeElement.tagName")

    def search(self, words):
        self.one("#search").clear()
        self.one("#search").send_keys(words)

    def media(self, kind, scheme):
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "media": kind, "features": [{"name": "prefers-color-scheme", "value": scheme}]})

    def complaints(self):
        return [each["message"] for each in self.driver.get_log("browser")
                if each["level"] in ("SEVERE", "WARNING")]

    def quit(self):
        self.driver.quit()


def lab(folder):
    """Two racks, one of them recorded twice, a box of an evil model, and what is no recording."""
    for name, sample in (("monday/rack1", "renumbering-first"), ("tuesday/rack1", "renumbering-swapped"),
                         ("monday/rack2", "switchboxes"), ("monday/rack3", "one-switch")):
        target = folder / "lab" / f"{name}.dump"
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(SAMPLES / f"{sample}.dump", target)
    (folder / "lab/monday/rack3.ini").write_text(
        "[MR00:77]\nModel = Gone Box\nTerminalName = TAV7\n", encoding="utf-8")
    (folder / "lab/monday/notes.txt").write_text("<b>no bus</b>\n", encoding="utf-8")
    descriptions = folder / "descriptions"
    shutil.copytree(SOURCE / "descriptions", descriptions)
    card = next(descriptions.rglob("tav-c1-adapter-card.ini"))
    lines = [f"Model = {EVIL}" if line.startswith("Model") else line
             for line in card.read_text(encoding="utf-8").splitlines()]
    card.write_text("\n".join(lines) + "\n", encoding="utf-8")
    return descriptions


def overview(page, file):
    page.open(file)
    check(page.driver.title == "Lab <b>7</b> & \"more\"", page.driver.title)
    check(page.one("h1").text == page.driver.title, "the title above the page")
    check(page.one("#counts").text == "4 machines, 5 recordings, 12 boxes", page.one("#counts").text)
    check(page.one("#found").text == "5 recordings", page.one("#found").text)
    rows = [[cell.text for cell in row.find_elements(By.TAG_NAME, "td")]
            for row in page.all("tbody tr") if row.is_displayed()]
    check([row[:2] for row in rows] == [["notes", "could not be read"], ["rack2", "degraded link"],
                                        ["rack3", "absent box"], ["rack1", "changed"]], rows)
    check(rows[1][2] == "TAV3 upstream runs x4 of x8 5 of 8 GT/s", rows[1])
    check(rows[2][2] == "TAV7 (Gone Box), stood at MR00:77", rows[2])
    check(rows[3][2].startswith("4 boxes since "), rows[3])


def boxes(page, file):
    page.open(file, "#2")
    check(page.one("#machine h2").text == "rack2", page.one("#machine h2").text)
    check(page.texts(".box h3") == ["TAV1*", "TAV2*", "TAVCard1*", "TAV3*"], page.texts(".box h3"))
    first = page.all(".box")[0]
    connectors = [each.text for each in first.find_elements(By.CSS_SELECTOR, ".connector")]
    check(connectors[0].startswith("1") and "03:00.0" in connectors[0], connectors)
    check("TAVCard1*" in connectors[1] and EVIL in connectors[1], connectors)
    check(connectors[2] == "3empty" or connectors[2].split() == ["3", "empty"], connectors)
    wide = page.all(".box")[3]
    check("link upstream runs x4 of x8 5 of 8 GT/s" in wide.text, wide.text)
    check([each.text for each in wide.find_elements(By.CSS_SELECTOR, ".label")]
          == ["A1", "B1 B2", "C1 C2 C3 C4"], wide.text)
    # Text stays text.
    check(page.run("return document.querySelectorAll('script').length") == 2, "a script more")
    check(not page.all("main img, nav img, b b"), "markup from outside")
    page.open(file, "#3")
    check(page.texts(".absent") == ["TAV7 Gone Box is not there, stood at MR00:77"],
          page.texts(".absent"))
    page.open(file, "#0")
    check("expected what lspci -x prints" in page.one(".failed").text, page.one("main").text)


def comparing(page, file):
    page.open(file, "#4")
    Select(page.one("#compare")).select_by_index(1)
    check(page.active() == "compare", page.active())
    check(page.run("return location.hash") == "#4,1", "the address of the comparison")
    sides = page.all(".sides > section")
    check(len(sides) == 2, len(sides))
    check(not sides[0].find_elements(By.CSS_SELECTOR, ".changed"), "the older one has no changes")
    changed = [each.text for each in sides[1].find_elements(By.CSS_SELECTOR, ".box .change")]
    check("moved, was at MR00:00,28" in changed and "address was 06:00.0" in changed and
          "new" in changed, changed)
    check(any(each.startswith("gone: ") and "82574L" in each for each in changed), changed)
    # The other way round it is the same comparison.
    page.open(file, "#1,4")
    check([each.text for each in page.all(".sides > section:last-child .box .change")] == changed,
          "the same changes")
    page.open(file, "#4,1")
    Select(page.one("#compare")).select_by_value("")
    check(not page.all(".sides"), "nothing to compare with")


def keyboard(page, file):
    page.open(file)
    page.one("body").send_keys("/")
    check(page.active() == "search", page.active())
    page.keys("rack1")
    check(page.one("#found").text == "2 of 5 recordings", page.one("#found").text)
    page.keys(Keys.ARROW_DOWN)
    check(page.active() == "entry-1", page.active())
    page.keys(Keys.ARROW_DOWN)
    check(page.active() == "entry-4", page.active())
    check(page.run("return getComputedStyle(document.activeElement).outlineStyle") == "solid",
          "the focus is seen")
    page.keys(Keys.ENTER)
    check(page.one("#machine h2").text == "rack1", page.one("#machine").text)
    check(page.one("#entry-4").get_attribute("aria-selected") == "true", "chosen")
    page.keys(Keys.HOME)
    check(page.active() == "entry-1", page.active())
    page.keys(Keys.ARROW_UP)
    check(page.active() == "search", page.active())
    page.keys(Keys.ESCAPE)
    check(page.one("#search").get_attribute("value") == "", "the search is empty")
    page.keys(Keys.ESCAPE)
    check(page.one("#machine h2").text == "What to look at", page.one("#machine").text)
    page.search("TAV3 rack2")
    page.keys(Keys.ENTER)
    check("TAV3" in page.texts("mark") and "rack2" in page.texts("mark"), page.texts("mark"))
    for word, entries in (("41:00.0", 1), ("82574l", 4), ("0000:41:00.0", 1), ("8086:10d3", 4), ("switch box", 4), ("gone box", 1),
                          ("MR00:77", 1), ("<img", 3), ("nothing like this", 0)):
        page.search(word)
        check(len(page.all("#list li")) == entries, (word, len(page.all("#list li"))))
    page.search("")
    page.one("#search").send_keys(" ", Keys.BACKSPACE)
    for value, entries in (("degraded", 1), ("absent", 1), ("failed", 1), ("changed", 1)):
        box = page.one(f"#only input[value={value}]")
        box.click()
        check(len(page.all("#list li")) == entries, (value, len(page.all("#list li"))))
        box.click()
    # Every field has a name that can be read out.
    for each in page.all("input, select, button, [role=option]"):
        check(each.accessible_name, each.get_attribute("outerHTML"))


def reading(page, file):
    for kind, scheme in (("screen", "light"), ("screen", "dark"), ("print", "light"),
                         ("print", "dark")):
        for place in ("", "#2", "#3", "#0", "#4,1"):
            page.open(file, place)
            page.media(kind, scheme)
            contrasts = page.run(CONTRASTS)
            check(len(contrasts) > 5, contrasts)
            low = [each for each in contrasts if each[0] < 4.5]
            check(not low, (kind, scheme, place, low))
        seen = page.one("nav").is_displayed(), page.one("[role=search]").is_displayed()
        check(seen == ((False, False) if kind == "print" else (True, True)), (kind, seen))
        dark = page.run("return getComputedStyle(document.body).backgroundColor") == "rgb(20, 24, 31)"
        check(dark == (kind == "screen" and scheme == "dark"), (kind, scheme))
    page.media("", "light")
    # A narrow screen is not scrolled sideways.
    page.driver.set_window_size(500, 900)
    for place in ("", "#2", "#4,1"):
        page.open(file, place)
        check(page.run("return document.documentElement.scrollWidth <= window.innerWidth"), place)
    page.driver.set_window_size(1200, 900)


def strangers(page, file):
    """Nothing runs that is not the page's own, however it got into it."""
    taken = "document.title='taken'"
    strange = file.with_name("strange.html")
    strange.write_text(file.read_text(encoding="utf-8").replace(
        "<h1>", f"<script>{taken}</script><style>h1 {{ color: #123456 }}</style>"
                f"<img src=x onerror=\"{taken}\"><h1 style='color: #123456'>"), encoding="utf-8")
    page.open(strange)
    check(page.one("#found").text == "5 recordings", "the page's own script")
    check(page.driver.title != "taken", "a strange script was run")
    color = page.run("return getComputedStyle(document.querySelector('h1')).color")
    check(color != "rgb(18, 52, 86)", color)
    refused = [each for each in page.complaints() if "Content Security Policy" in each]
    check(len(refused) >= 4, refused)


def thousand(page, folder):
    many = folder / "many"
    many.mkdir()
    copies = folder / "copies"  # of which there may be links
    copies.mkdir()
    dumps = [shutil.copy(each, copies) for each in sorted(SAMPLES.glob("*.dump"))]
    for number in range(1000):
        os.link(dumps[number % len(dumps)], many / f"host{number:04}.dump")
    file = folder / "many.html"
    tavctl("report", many, "--descriptions", SOURCE / "descriptions", "-o", file)
    check(file.stat().st_size < 10_000_000, file.stat().st_size)
    page.open(file)
    check(page.one("#found").text == "1,000 recordings", page.one("#found").text)
    nodes = "return document.querySelectorAll('*').length"
    check(page.run(nodes) < 4000, page.run(nodes))
    # A search has its answer before the event is over.
    answer = """
        const search = document.getElementById("search");
        search.value = arguments[0];
        search.dispatchEvent(new Event("input"));
        return [document.querySelectorAll("#list li:not(.more)").length,
                document.getElementById("found").textContent,
                document.querySelectorAll("*").length];"""
    check(page.run(answer, "host0777")[:2] == [1, "1 of 1,000 recordings"], "one")
    count, found, nodes = page.run(answer, "tav1")
    check(count == 150 and nodes < 4000 and found.endswith(" of 1,000 recordings"),
          (count, found, nodes))
    # What is not listed at first is reached by keys.
    page.one("#list li").send_keys(Keys.END, Keys.ENTER)
    check(len(page.all("#list li:not(.more)")) == 300, len(page.all("#list li")))


def main():
    with tempfile.TemporaryDirectory(prefix="report-") as name:
        folder = pathlib.Path(name)
        descriptions = lab(folder)
        file = folder / "lab.html"
        tavctl("report", folder / "lab", "--descriptions", descriptions, "-o", file,
               "--title", 'Lab <b>7</b> & "more"', status=3)
        page = Page(folder)
        try:
            for test in (overview, boxes, comparing, keyboard, reading):
                test(page, file)
                check(page.driver.title != "taken", "a model's name was run")
                check(not page.complaints(), (test.__name__, page.complaints()))
                print(f"{test.__name__}: done", flush=True)
            strangers(page, file)
            print("strangers: done", flush=True)
            thousand(page, folder)
            asked = page.run("return performance.getEntriesByType('resource').map((each) => each.name)")
            check(not asked, asked)
            print("thousand: done")
        finally:
            page.quit()


if __name__ == "__main__":
    main()
