#!/usr/bin/python3
"""Draws docs/look/timeline.png and docs/look/timeline-dark.png from docs/look/skylight.log, as a browser shows them:

    tools/drawlook.py [VNLOG [CHROMIUM]]     default: build/release/programs/bin/vnlog and the chromium in the path

The log is of a real run:

    VN_TRACE_OPTIONS=show=Skylight VN_LOG_TRACING=skylight.log VN_LOG_PROFILING=skylight.log skylight -q -j 4 -w 480 -o ''
"""
import base64
import pathlib
import shutil
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / 'tests/site'))
from browser import Browser  # noqa: E402

VNLOG = sys.argv[1] if len(sys.argv) > 1 else ROOT / 'build/release/programs/bin/vnlog'
CHROMIUM = sys.argv[2] if len(sys.argv) > 2 else shutil.which('chromium')
LOOK = ROOT / 'docs/look'


def shoot(browser, name):
    browser.settle()
    (LOOK / name).write_bytes(base64.b64decode(browser.call('Page.captureScreenshot', format='png')['data']))


with tempfile.TemporaryDirectory() as folder, Browser(CHROMIUM) as browser:
    page = pathlib.Path(folder) / 'skylight.html'
    subprocess.run([VNLOG, 'timeline', '-o', page, LOOK / 'skylight.log'], check=True)
    browser.set_view(1280, 560, 'light')
    browser.open(page.as_uri())
    browser.run('window.ready')
    shoot(browser, 'timeline.png')
    browser.set_view(1280, 560, 'dark')
    browser.run('(() => { const view = timeline.picture, end = timeline.model.end; view.setView(0.42 * end, 0.09 * end); })()')
    shoot(browser, 'timeline-dark.png')
