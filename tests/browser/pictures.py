"""Makes the pictures of docs/pictures anew: pictures.py PROGRAM"""

import subprocess
import sys
import tempfile
from pathlib import Path

from chromium import Chromium

HOUSE = Path(__file__).resolve().parents[2]
FOLDER = HOUSE / "docs/pictures"


def choose(browser, name):
    """Chooses a point by its name, with the whole network in sight."""
    browser.click_on("#search")
    browser.type(name)
    browser.key("Enter")
    browser.click_on("#all")


def main(program):
    with tempfile.TemporaryDirectory() as folder, Chromium(1200, 860) as browser:
        def look(page, dark, width, height, plot=360):
            browser.resize(width, height)
            browser.dark(dark)
            browser.open(page)
            browser.run("document.querySelector('.canvas').style.height = '%dpx'" % plot)  # all of it in the picture

        def show(example, dark=False, width=1200, height=880, solver="sparse"):
            page = Path(folder) / f"{example}.html"
            subprocess.run([program, "adjust", f"examples/{example}.inp", "--quiet", "--solver", solver, "--html", page, "-o", f"{page}.txt"], cwd=HOUSE, check=True)
            look(page, dark, width, height)

        show("gross_error")
        browser.click_on("#details tbody tr")
        browser.run("scrollTo({top: 0, behavior: 'instant'})")
        browser.mouse("mouseMoved", 5, 5)
        browser.picture(FOLDER / "page.png")

        show("monitoring_wall", dark=True)
        browser.click_on("#turn")
        choose(browser, "A5")
        browser.run("scrollTo({top: 0, behavior: 'instant'})")
        browser.mouse("mouseMoved", 5, 5)
        browser.picture(FOLDER / "page_dark.png")

        show("niemeier_levelling_free")
        browser.picture(FOLDER / "page_levelling.png")

        page = Path(folder) / "epochs.html"
        epochs = [f"examples/dam_{month}.inp" for month in ("may_2026", "november_2026", "may_2027")]
        subprocess.run([program, "compare", *epochs, "--quiet", "--html", page, "-o", f"{page}.txt"], cwd=HOUSE, check=True)
        look(page, False, 1200, 880, plot=470)
        browser.picture(FOLDER / "page_epochs.png")

        show("total_station_heights", height=900)
        browser.click_on("#tabs button:nth-child(2)")
        browser.click_on(".window:not([hidden]) th:nth-child(11) button")
        browser.click_on(".window:not([hidden]) th:nth-child(11) button")
        browser.run("document.getElementById('lists').scrollIntoView({behavior: 'instant'})")
        browser.frames(4)
        browser.picture(FOLDER / "page_tables.png")


if __name__ == "__main__":
    main(str(Path(sys.argv[1] if len(sys.argv) > 1 else HOUSE / "build/release/vorn").resolve()))
