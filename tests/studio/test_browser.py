"""A whole session in headless Chromium: a class drawn on the bundled frame is found where it
was drawn, saved as nuv_train writes it, and loaded back with the same segmentation."""
import math
import os
import re
import subprocess
import tempfile

import pytest
from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

import nuv
from conftest import BALL, FRAME

CHROMIUM_FLAGS = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic",
                  "--no-first-run", "--disable-background-networking",
                  "--disable-component-update", "--disable-sync", "--window-size=1400,1050"]


@pytest.fixture
def studio(tmp_path):
    process = subprocess.Popen([os.environ["NUV_STUDIO"], "--image", FRAME, "--port", "0",
                                "--out", str(tmp_path / "classes.txt")],
                               stdout=subprocess.PIPE, text=True)
    try:
        line = process.stdout.readline()
        yield re.search(r"http://\S+/", line).group(0)
    finally:
        process.terminate()
        process.wait(10)


@pytest.fixture
def browser(tmp_path):
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for flag in CHROMIUM_FLAGS + [f"--user-data-dir={tmp_path / 'profile'}"]:
        options.add_argument(flag)
    driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
    driver.set_page_load_timeout(20)
    yield driver
    driver.quit()


def wait(driver, what, timeout=15):
    return WebDriverWait(driver, timeout).until(lambda d: what(d))


def drag_rectangle(driver, canvas, rect):
    """Presses on the rectangle's first pixel and lets go on its last, as a person would."""
    left, top, width, height, pixels = driver.execute_script(
        "const b = arguments[0].getBoundingClientRect();"
        "return [b.left, b.top, b.width, b.height, arguments[0].width];", canvas)
    scale = width / pixels
    x, y, w, h = rect

    def offset(px, py):
        # The pointer lands at the element's centre (rounded down) plus the offset.
        return (math.floor(left + (px + 0.5) * scale) - math.floor(left + width / 2),
                math.floor(top + (py + 0.5) * scale) - math.floor(top + height / 2))

    ActionChains(driver).move_to_element_with_offset(canvas, *offset(x, y)).click_and_hold() \
        .move_to_element_with_offset(canvas, *offset(x + w // 2, y + h // 2)) \
        .move_to_element_with_offset(canvas, *offset(x + w - 1, y + h - 1)).release().perform()


def found(driver, name):
    """(pixel count, centre) the page shows for the class, None while it shows none."""
    shown = driver.execute_script(
        "const e = document.querySelector(`.class[data-name='${arguments[0]}'] .found`);"
        "return e && e.dataset.cx !== undefined ? [+e.dataset.count, +e.dataset.cx,"
        " +e.dataset.cy] : null;", name)
    return (shown[0], (shown[1], shown[2])) if shown else None


def reference(classes_file):
    """What a host's segmenter finds in the frame with these classes."""
    segmenter = nuv.Segmenter()
    with open(classes_file) as f:
        segmenter.setColorSegments(nuv.segmentListfromString(f.read()))
    (ball,) = segmenter.segment(nuv.imread(FRAME))
    return ball.pixelCount, tuple(ball.center)


def test_session_on_the_bundled_frame(studio, browser, tmp_path):
    browser.get(studio)
    canvas = browser.find_element(By.ID, "picture")
    wait(browser, lambda d: canvas.get_attribute("width") == "640")
    browser.find_element(By.ID, "new-name").send_keys("ball")
    browser.find_element(By.CSS_SELECTOR, "#add-class button").click()
    wait(browser, lambda d: d.find_elements(By.CSS_SELECTOR, '.class[data-name="ball"]'))

    drag_rectangle(browser, canvas, BALL)
    count, (cx, cy) = wait(browser, lambda d: found(d, "ball"))
    sample = browser.find_element(By.CSS_SELECTOR, '.class[data-name="ball"] li').text
    assert sample.startswith("rect 140,270,60,60")
    x, y, w, h = BALL
    assert x <= cx < x + w and y <= cy < y + h and count > w * h // 2

    browser.find_element(By.ID, "save").click()
    saved = tmp_path / "classes.txt"
    wait(browser, lambda d: saved.exists())
    trained = tmp_path / "trained.txt"
    subprocess.run([os.environ["NUV_TRAIN"], "--image", FRAME, "--class", "ball:140,270,60,60",
                    "--dilate", "3", "--out", str(trained)], check=True, capture_output=True)
    assert saved.read_text() == trained.read_text()
    browser.save_screenshot(os.environ.get("NUV_STUDIO_SCREENSHOT",
                                           os.path.join(tempfile.gettempdir(), "studio.png")))

    # Gone, and back from the file: the same region as the host's segmenter finds.
    browser.find_element(By.XPATH, '//li[@data-name="ball"]//button[text()="Delete"]').click()
    wait(browser, lambda d: not d.find_elements(By.CSS_SELECTOR, ".class"))
    browser.find_element(By.ID, "load-file").send_keys(str(saved))
    assert wait(browser, lambda d: d.find_elements(By.CSS_SELECTOR, ".class") and
                found(d, "ball")) == reference(trained) == (count, (cx, cy))
    assert "ms per frame at slot" in browser.find_element(By.ID, "timing").text

    # A second tab on the same session is told so and changes nothing.
    first = browser.current_window_handle
    browser.switch_to.new_window("tab")
    browser.get(studio)
    message = browser.find_element(By.ID, "message-text")
    assert "another browser tab" in wait(browser, lambda d: message.text)
    browser.close()
    browser.switch_to.window(first)
