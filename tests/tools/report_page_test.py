"""Opens the pages of report and sweep in headless Chromium, without a network, and uses them as a person does.

report_page_test.py ZELWELD CHROMIUM CHROMEDRIVER; ends with 77 where any of it is missing.
"""
import json
import os
import pathlib
import subprocess
import sys
import tempfile

SKIPPED = 77
FRAMES = 12
DARK = [5, 6, 10]
SIZE = (1366, 768)  # a small laptop

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.action_chains import ActionChains
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
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
    run("report", "f", "--type", "gap", "--exact", "--out", "report.html")
    run("sweep", "f", "--type", "gap", "--set", "dPara8=5:105:10", "--out", "sweep.html")
    return folder / "report.html", folder / "sweep.html"


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
    return [url for url in urls if not url.startswith("data:") and url != page.as_uri()]


def opened_frame(browser):
    is_open = browser.execute_script("return document.getElementById('viewer').open")
    return browser.find_element(By.ID, "viewer-frame").text if is_open else None


def check_timeline(browser):
    rows = browser.execute_script("return charts.map((chart) => chart.numRows())")
    assert rows == [FRAMES] * 4, rows
    lost = browser.execute_script("return report.frames.flatMap((frame, n) => (frame.state === 'lost' ? [n] : []))")
    assert lost == DARK, lost
    for name, height in (("ribbon", 20), ("charts", 60)):
        place = browser.find_element(By.ID, name)
        browser.execute_script("arguments[0].scrollIntoView({block: 'center'})", place)
        box = place.rect
        # Where frame 6 stands between the left axis and the right gap.
        x = browser.execute_script("return charts[0].toDomXCoord(6)")
        top = -box["height"] / 2 + height if name == "charts" else 0
        ActionChains(browser).move_to_element_with_offset(place, x - box["width"] / 2, top).click().perform()
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
    assert sum(counts) == FRAMES and counts[-1] == FRAMES - len(DARK), counts
    shown = lambda: [int(thumb.get_attribute("data-frame")) for thumb in browser.find_elements(By.CLASS_NAME, "thumb")]
    rows[0].find_element(By.TAG_NAME, "button").send_keys(Keys.ENTER)
    assert shown() and set(shown()) <= set(DARK), shown()
    browser.execute_script("arguments[0].click()", rows[0])
    assert len(shown()) == FRAMES, "a second click shows all frames"
    assert browser.find_elements(By.CSS_SELECTOR, "#parameter-rows tr"), "no parameters"


def check_report(browser):
    check_timeline(browser)
    check_frames(browser)
    check_reasons(browser)


def check_sweep(browser):
    rows = browser.execute_script("return charts.map((chart) => chart.numRows())")
    assert rows == [11, 11], rows
    values = [row.find_elements(By.TAG_NAME, "td")[0].text for row in browser.find_elements(By.CSS_SELECTOR, "#rows tr")]
    assert values == [str(value) for value in range(5, 106, 10)], values
    cards = browser.find_element(By.ID, "summary").text
    assert "suggestion for minGapPx" in cards and "none" not in cards, cards


def main():
    zelweld, chromium, driver = sys.argv[1:4]
    if not os.path.exists(chromium) or not os.path.exists(driver):
        print("skipped: chromium or chromedriver is not installed")
        return SKIPPED
    with tempfile.TemporaryDirectory() as name:
        pages = make_pages(zelweld, pathlib.Path(name))
        browser = open_browser(chromium, driver)
        try:
            for page, check in zip(pages, (check_report, check_sweep)):
                browser.get(page.as_uri())
                check(browser)
                messages = browser.get_log("browser")
                assert not messages, messages
                requests = foreign_requests(browser, page)
                assert not requests, requests
        finally:
            browser.quit()
    return 0


if __name__ == "__main__":
    sys.exit(main())
