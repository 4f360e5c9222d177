"""Opens the pages of report, sweep and compare in headless Chromium, without a network, and uses them as a person does.

report_page_test.py ZELWELD CHROMIUM CHROMEDRIVER AXE; ends with 77 where any of the first three is missing. AXE is the
axe.min.js of axe-core (scripts/fetch-axe.sh); without it accessibility is not looked at.
"""
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time

SKIPPED = 77
FRAMES = 12
DARK = [5, 6, 10]
SIZE = (1366, 768)  # a small laptop
NARROW = range(812, 830)  # frames of a long sequence in which the gap is narrow

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.action_chains import ActionChains
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
    from selenium.webdriver.support.ui import WebDriverWait
except ImportError:
    print("skipped: python3-selenium is not installed")
    sys.exit(SKIPPED)


def make_pages(zelweld, folder):
    run = lambda *words: subprocess.run([zelweld, *words], cwd=folder, check=True, capture_output=True)
    run("simulate", "--type", "gap", "--frames", str(FRAMES), "--size", "640x480", "--drift", "1,0.3", "--out", "f")
    run("simulate", "--type", "blank", "--frames", "1", "--size", "640x480", "--out", "blank")
    for number in DARK:
        (folder / f"f/frame_{number:04d}.png").write_bytes((folder / "blank/frame_0000.png").read_bytes())
    (folder / "f/frame_0011.png").rename(folder / "f/x<img src=y onerror=alert(1)>.png")
    truth = (folder / "f/truth.csv").read_text().splitlines()
    fields = truth[1].split(",")
    wrong = truth[0] + "\n" + ",".join(fields[:2] + ["1"] + fields[3:]) + "\n"  # x of frame 0
    (folder / "labels.csv").write_text(wrong)
    run("report", "f", "--type", "gap", "--exact", "--truth", "labels.csv", "--out", "report.html")
    run("sweep", "f", "--frames", "0:4", "--type", "gap", "--set", "dPara8=5:105:10", "--out", "sweep.html")
    (folder / "a.json").write_text('{"weldType": "gap"}')
    run("compare", "a.json", "f", "--set", "minGapPx=200", "--out", "compare.html")
    return folder / "report.html", folder / "sweep.html", folder / "compare.html"


def open_browser(chromium, driver):
    options = webdriver.ChromeOptions()
    options.binary_location = chromium
    for word in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--hide-scrollbars",
                 f"--window-size={SIZE[0]},{SIZE[1]}"):
        options.add_argument(word)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
    return webdriver.Chrome(service=Service(driver), options=options)


def foreign_requests(browser, page):
    urls = []
    for entry in browser.get_log("performance"):
        message = json.loads(entry["message"])["message"]
        if message["method"] == "Network.requestWillBeSent":
            urls.append(message["params"]["request"]["url"])
    return [url for url in urls if not url.startswith("data:") and url.split("#")[0] != page.as_uri()]


def opened_frame(browser):
    is_open = browser.execute_script("return document.getElementById('viewer').open")
    return browser.find_element(By.ID, "viewer-frame").text if is_open else None


def check_timeline(browser):
    rows = browser.execute_script("return charts.map((chart) => chart.numRows())")
    titles = [title.text for title in browser.find_elements(By.CSS_SELECTOR, "#charts .title")]
    assert rows == [FRAMES] * len(titles) and {"seam x, px", "gapPx, px", "confidence"} <= set(titles), titles
    lost = browser.execute_script("return report.frames.flatMap((frame, n) => (frame.state === 'lost' ? [n] : []))")
    assert lost == DARK, lost
    for name in ("#ribbon", "#charts .plot"):
        place = browser.find_element(By.CSS_SELECTOR, name)
        browser.execute_script("arguments[0].scrollIntoView({block: 'center'})", place)
        box = place.rect
        # Where frame 6 stands between the left axis and the right gap.
        x = browser.execute_script("return charts[0].toDomXCoord(6)")
        ActionChains(browser).move_to_element_with_offset(place, x - box["width"] / 2, 0).click().perform()
        assert opened_frame(browser) == "Frame 6", (name, opened_frame(browser))
        browser.find_element(By.ID, "viewer-close").click()


def check_frames(browser):
    thumbs = browser.find_elements(By.CLASS_NAME, "thumb")
    assert len(thumbs) == FRAMES, len(thumbs)
    thumbs[DARK[0]].click()
    assert opened_frame(browser) == f"Frame {DARK[0]}", opened_frame(browser)
    assert browser.execute_script("return document.getElementById('viewer-image').naturalWidth") == 640
    assert browser.find_elements(By.CSS_SELECTOR, "#viewer-facts .test.failed"), "no failed test is shown"
    sentence = browser.find_element(By.CSS_SELECTOR, "#viewer-facts .sentence").text
    assert sentence and sentence != "seam found", sentence
    keys = browser.find_element(By.TAG_NAME, "body")
    for key, frame in ((Keys.ARROW_RIGHT, DARK[0] + 1), (Keys.ARROW_LEFT, DARK[0]), (Keys.ARROW_LEFT, DARK[0] - 1)):
        ActionChains(browser).send_keys(key).perform()
        assert opened_frame(browser) == f"Frame {frame}", (opened_frame(browser), frame)
    ActionChains(browser).send_keys(Keys.ESCAPE).perform()
    assert opened_frame(browser) is None


def check_reasons(browser):
    rows = browser.find_elements(By.CSS_SELECTOR, "#reason-table tbody tr")
    counts = [int(row.find_elements(By.TAG_NAME, "td")[1].text) for row in rows]
    assert sum(counts) == FRAMES and max(counts) == FRAMES - len(DARK) - 1, counts
    shown = lambda: [int(thumb.get_attribute("data-frame")) for thumb in browser.find_elements(By.CLASS_NAME, "thumb")]
    rows[0].find_element(By.TAG_NAME, "button").send_keys(Keys.ENTER)
    assert shown() and set(shown()) <= set(DARK), shown()
    browser.execute_script("arguments[0].click()", rows[0])
    assert len(shown()) == FRAMES, "a second click shows all frames"
    assert browser.find_elements(By.CSS_SELECTOR, "#parameter-rows tr"), "no parameters"
    wrong = [row.text for row in rows if row.text.startswith("wrong by its label")]
    assert len(wrong) == 1 and "px from its label" in wrong[0] and "frame 0" in wrong[0], wrong


def check_losses(browser):
    first = browser.execute_script("return document.querySelector('main section:nth-of-type(2)').id")
    rows = [[cell.text for cell in row.find_elements(By.TAG_NAME, "td")]
            for row in browser.find_elements(By.CSS_SELECTOR, "#loss-table tbody tr")]
    assert first == "losses" and [row[:3] for row in rows] == [["5", "6", "2"], ["10", "10", "1"]], rows
    browser.find_element(By.ID, "go-number").send_keys("6", Keys.ENTER)
    assert opened_frame(browser) == "Frame 6", opened_frame(browser)
    assert browser.current_url.endswith("#frame=6"), browser.current_url
    browser.find_element(By.ID, "viewer-close").click()
    browser.execute_script("location.hash = 'frame=10'")
    WebDriverWait(browser, 5).until(lambda b: opened_frame(b) == "Frame 10")
    browser.find_element(By.ID, "viewer-close").click()


def check_ribbon_keys(browser):
    ribbon = browser.find_element(By.ID, "ribbon")
    ribbon.send_keys(Keys.HOME, Keys.ARROW_RIGHT, Keys.ARROW_RIGHT, Keys.ARROW_LEFT)
    assert ribbon.get_attribute("aria-valuetext") == "frame 1, found", ribbon.get_attribute("aria-valuetext")
    ribbon.send_keys(Keys.ENTER)
    assert opened_frame(browser) == "Frame 1", opened_frame(browser)
    browser.find_element(By.ID, "viewer-close").click()


def check_limits(browser):
    browser.find_element(By.CSS_SELECTOR, "#tests summary").click()
    titles = "return [...document.querySelectorAll('#test-charts .title')].map((title) => title.textContent)"
    gap = lambda b: [title for title in b.execute_script(titles) if title.startswith("gap, px; must be ≥")]
    WebDriverWait(browser, 5).until(gap)
    limits = browser.execute_script("return charts[charts.length - 1].getLabels()")
    assert limits[3] == "limit", limits


def check_narrow(browser, page):
    for width in (400, 700):
        browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                                {"width": width, "height": 900, "deviceScaleFactor": 1, "mobile": True})
        browser.get(page.as_uri())
        assert browser.execute_script("return document.documentElement.scrollWidth") <= width, (page.name, width)
    browser.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})


def check_access(browser, page, axe):
    """Contrast, names and keyboard use, as axe-core judges them in both colour schemes, with and without a frame."""
    for scheme in ("light", "dark"):
        browser.execute_cdp_cmd("Emulation.setEmulatedMedia",
                                {"features": [{"name": "prefers-color-scheme", "value": scheme}]})
        for place in ("", f"#frame={DARK[0]}"):
            browser.get("about:blank")
            browser.get(page.as_uri() + place)
            browser.execute_script(axe)
            found = browser.execute_async_script("axe.run().then(arguments[0])")
            assert len(found["passes"]) > 10, "axe-core did not look"
            bad = [(rule["id"], rule["nodes"][0]["html"]) for rule in found["violations"]
                   if rule["impact"] in ("serious", "critical")]
            assert not bad, (page.name, scheme, place, bad)


def check_report(browser):
    check_losses(browser)
    check_ribbon_keys(browser)
    check_timeline(browser)
    check_limits(browser)
    check_frames(browser)
    check_reasons(browser)


def check_sweep(browser):
    rows = browser.execute_script("return charts.map((chart) => chart.numRows())")
    assert rows == [11, 11], rows
    values = [row.find_elements(By.TAG_NAME, "td")[0].text for row in browser.find_elements(By.CSS_SELECTOR, "#rows tr")]
    assert values == [str(value) for value in range(5, 106, 10)], values
    cards = browser.find_element(By.ID, "summary").text
    assert "suggestion for minGapPx" in cards and "none" not in cards, cards


def check_compare(browser):
    pairs = browser.find_elements(By.CSS_SELECTOR, "#frames .pair")
    assert len(pairs) == FRAMES - len(DARK), len(pairs)
    assert browser.execute_script("return [...document.images].every((image) => image.naturalWidth > 0)")
    assert "B: lost. " in pairs[0].text and "set by minGapPx" in pairs[0].text, pairs[0].text
    figures = browser.find_element(By.ID, "figures").text
    assert f"frames found {FRAMES - len(DARK)} 0" in figures, figures


def find_lost_seam(browser, zelweld, folder):
    """Lost in frame 812: what is lost, what to change, and the proof."""
    run = lambda *words: subprocess.run([zelweld, *words], cwd=folder, check=True, capture_output=True, text=True).stdout
    # Two frames with a gap of 44 px, then two with 60 px.
    run("simulate", "--type", "gap", "--frames", "4", "--jump-at", "2", "--jump", "0,0", "--change-profile", "--size",
        "320x240", "--seed", "7", "--out", "pair")
    (folder / "long").mkdir()
    for number in range(900):
        frame = folder / f"pair/frame_{0 if number in NARROW else 2:04d}.png"
        os.link(frame, folder / f"long/{number:04d}.png")
    start = time.monotonic()
    run("report", "long", "--type", "gap", "--set", "minGapPx=50", "--hold", "0", "--out", "lost.html")
    browser.get((folder / "lost.html").as_uri())
    loss = browser.find_element(By.CSS_SELECTOR, "#loss-table tbody tr")
    assert [cell.text for cell in loss.find_elements(By.TAG_NAME, "td")][:3] == ["812", "829", "18"], loss.text
    loss.find_element(By.TAG_NAME, "button").click()
    facts = browser.find_element(By.ID, "viewer-facts").text
    assert opened_frame(browser) == "Frame 812" and "needs minGapPx (dPara8) 44 or less" in facts, facts
    advice = run("advise", "long", "--type", "gap", "--set", "minGapPx=50")
    change = re.search(r"Advice: --set (minGapPx=4[34567])\n", advice)
    assert change and "882 of 900" in advice and "900 of 900" in advice, advice
    assert "0.00 px of the frames found before" in advice, advice
    run("report", "long", "--type", "gap", "--set", change[1], "--out", "proof.html")
    seconds = time.monotonic() - start
    browser.get((folder / "proof.html").as_uri())
    assert "900" in browser.find_element(By.ID, "summary").text and not browser.find_elements(
        By.CSS_SELECTOR, "#loss-table tbody button"), "still lost"
    print(f"lost seam found in {seconds:.1f} s of computing")
    assert seconds < 120, "30 s without sanitizers, on cores of its own"


def main():
    zelweld, chromium, driver, axe_file = sys.argv[1:5]
    if not os.path.exists(chromium) or not os.path.exists(driver):
        print("skipped: chromium or chromedriver is not installed")
        return SKIPPED
    axe = pathlib.Path(axe_file).read_text() if os.path.exists(axe_file) else None
    if not axe:
        print(f"accessibility not looked at: no {axe_file} (scripts/fetch-axe.sh)")
    with tempfile.TemporaryDirectory() as name:
        pages = make_pages(zelweld, pathlib.Path(name))
        browser = open_browser(chromium, driver)
        try:
            for page, check in zip(pages, (check_report, check_sweep, check_compare)):
                browser.get(page.as_uri())
                check(browser)
                messages = browser.get_log("browser")
                assert not messages, messages
                requests = foreign_requests(browser, page)
                assert not requests, requests
                check_narrow(browser, page)
                if axe:
                    check_access(browser, page, axe)
                browser.get_log("performance")
            find_lost_seam(browser, zelweld, pathlib.Path(name))
        finally:
            browser.quit()
    return 0


if __name__ == "__main__":
    sys.exit(main())
