"""A headless Chromium, driven through a pipe.

The browser gets its commands on descriptor 3 and answers on 4 (--remote-debugging-pipe), so nothing listens on a port. Each
wait is for an event or an answer of the browser; `patience` only ends a test whose browser hangs.
"""
import base64
import json
import os
import selectors
import shutil
import subprocess
import tempfile

FLAGS = ('--headless=new', '--no-sandbox', '--remote-debugging-pipe', '--disable-gpu', '--disable-dev-shm-usage', '--no-first-run',
         '--no-default-browser-check', '--disable-background-networking', '--disable-component-update', '--disable-sync',
         '--disable-default-apps', '--disable-renderer-backgrounding', '--disable-background-timer-throttling',
         '--disable-backgrounding-occluded-windows', '--disable-extensions', '--force-color-profile=srgb', '--font-render-hinting=none', '--host-resolver-rules=MAP * ~NOTFOUND')


class BrowserError(Exception):
    pass


class Browser:
    """One browser with one page; `with` ends it."""

    def __init__(self, program, patience=300):
        self.patience = patience
        # A short path: the browser ends at once if that of its socket takes more than 107 bytes, wherever the build folder lies.
        self.folder = folder = tempfile.mkdtemp(prefix='vn', dir='/tmp')
        to_read, self.to_write = os.pipe()
        self.from_read, from_write = os.pipe()

        def place():
            # Both are moved out of the way first, as either may be 3 or 4 already; the copies end where the program begins.
            reading, writing = os.dup2(to_read, 200, inheritable=False), os.dup2(from_write, 201, inheritable=False)
            os.dup2(reading, 3)
            os.dup2(writing, 4)

        environment = dict(os.environ, HOME=folder, XDG_CONFIG_HOME=folder, XDG_CACHE_HOME=folder, TMPDIR=folder)
        with open(os.path.join(folder, 'chromium.log'), 'wb') as log:
            self.process = subprocess.Popen([program, *FLAGS, f'--user-data-dir={folder}/profile', 'about:blank'],
                                            stdin=subprocess.DEVNULL, stdout=log, stderr=log, preexec_fn=place,
                                            close_fds=False, env=environment, start_new_session=True)
        os.close(to_read)
        os.close(from_write)
        self.selector = selectors.DefaultSelector()
        self.selector.register(self.from_read, selectors.EVENT_READ)
        self.unread, self.count, self.events, self.session = b'', 0, [], None

    def begin(self):
        # The page that the browser begins with: one more would lie behind it, and nothing be drawn there.
        self.call('Target.setDiscoverTargets', discover=True)
        target = self.wait(lambda event: event['method'] == 'Target.targetCreated' and event['params']['targetInfo']['type'] == 'page')
        target = target['params']['targetInfo']['targetId']
        self.session = self.call('Target.attachToTarget', targetId=target, flatten=True)['sessionId']
        for domain in ('Page', 'Runtime', 'Log', 'Network', 'DOM'):
            self.call(f'{domain}.enable')
        self.call('Page.setLifecycleEventsEnabled', enabled=True)
        # Keys go to the page although no window of a desktop is in front.
        self.call('Emulation.setFocusEmulationEnabled', enabled=True)

    def __enter__(self):
        try:
            self.begin()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        try:
            session, self.session = self.session, None
            self.call('Browser.close')
        except (BrowserError, OSError):
            self.process.kill()
        self.process.wait()
        os.close(self.to_write)
        os.close(self.from_read)
        shutil.rmtree(self.folder, ignore_errors=True)

    def receive(self):
        """The browser's next message."""
        while b'\0' not in self.unread:
            if not self.selector.select(self.patience):
                raise BrowserError(f'the browser has been silent for {self.patience} s')
            more = os.read(self.from_read, 1 << 20)
            if not more:
                raise BrowserError(f'the browser has ended; its log ends so:\n{self.read_log()[-2000:]}')
            self.unread += more
        message, self.unread = self.unread.split(b'\0', 1)
        return json.loads(message)

    def read_log(self):
        with open(os.path.join(self.folder, 'chromium.log'), encoding='utf-8', errors='replace') as log:
            return log.read()

    def call(self, method, **parameters):
        """Sends a command and gives its result; events that come before wait in `events`."""
        self.count += 1
        message = {'id': self.count, 'method': method, 'params': parameters}
        if self.session:
            message['sessionId'] = self.session
        data = json.dumps(message).encode() + b'\0'
        while data:
            try:
                data = data[os.write(self.to_write, data):]
            except BrokenPipeError:
                break  # receive() tells why
        while True:
            try:
                answer = self.receive()
            except BrowserError as failure:
                raise BrowserError(f'{failure}, in {method} {str(parameters)[:300]}') from failure
            if answer.get('id') == self.count:
                if 'error' in answer:
                    raise BrowserError(f'{method}: {answer["error"]["message"]}')
                return answer['result']
            if 'method' in answer:
                self.events.append(answer)

    def wait(self, is_it):
        """The first event that is it, of those that have come and will come."""
        seen = 0
        while True:
            while seen < len(self.events):
                if is_it(self.events[seen]):
                    return self.events[seen]
                seen += 1
            message = self.receive()
            if 'method' in message:
                self.events.append(message)

    def set_view(self, width, height, scheme):
        self.call('Emulation.setDeviceMetricsOverride', width=width, height=height, deviceScaleFactor=1, mobile=False)
        self.call('Emulation.setEmulatedMedia', features=[{'name': 'prefers-color-scheme', 'value': scheme}])
        self.settle()

    def open(self, url):
        """Loads a page, with all that its scripts load."""
        self.events.clear()
        answer = self.call('Page.navigate', url=url)
        if 'errorText' in answer:
            raise BrowserError(f'{url}: {answer["errorText"]}')
        self.wait_for_load(answer['loaderId'])

    def wait_for_load(self, loader):
        """Until the page that this loader brings has all that its scripts ask for."""
        self.wait(lambda event: event['method'] == 'Page.lifecycleEvent' and event['params']['name'] == 'load' and
                  event['params']['loaderId'] == loader)
        # What waits for jQuery's readiness runs behind the load event, and may wait for it once more.
        for _ in range(2):
            self.run('new Promise(done => window.jQuery ? jQuery(() => done(1)) : done(1))')
        # A script asks for the next one while it runs: once all have run and nothing is under way, nothing more will come.
        while True:
            self.settle()
            asked = {event['params']['requestId'] for event in self.events
                     if event['method'] == 'Network.requestWillBeSent' and event['params']['loaderId'] == loader}
            missing = asked - {event['params']['requestId'] for event in self.events if self.is_end(event)}
            if not missing:
                return
            self.wait(lambda event: self.is_end(event) and event['params']['requestId'] in missing)

    @staticmethod
    def is_end(event):
        return event['method'] in ('Network.loadingFinished', 'Network.loadingFailed')

    def settle(self):
        """Waits until what has changed is drawn."""
        self.run('document.fonts.ready.then(() => new Promise(done => '
                 'requestAnimationFrame(() => requestAnimationFrame(() => done(1)))))')

    def run(self, script):
        """The value of a script, or of its promise."""
        answer = self.call('Runtime.evaluate', expression=script, awaitPromise=True, returnByValue=True)
        if 'exceptionDetails' in answer:
            thrown = answer['exceptionDetails'].get('exception', {})
            raise BrowserError(thrown.get('description', 'a script failed') + '\n' + script)
        return answer['result'].get('value')

    def run_in(self, frame, script):
        """The value of a script in a frame of the page."""
        world = self.call('Page.createIsolatedWorld', frameId=frame)['executionContextId']
        answer = self.call('Runtime.evaluate', expression=script, contextId=world, awaitPromise=True, returnByValue=True)
        return answer['result'].get('value')

    def run_until(self, condition):
        """Waits, from drawing to drawing, until the condition holds."""
        self.run(f'new Promise(done => {{ const look = () => ({condition}) ? done(1) : requestAnimationFrame(look); look(); }})')

    def click(self, selector):
        self.click_on(f'document.querySelector({json.dumps(selector)})')

    def click_on(self, element):
        """Clicks in the middle of what the expression gives, once it has come to rest and nothing lies before it."""
        x, y = self.run(f"""new Promise(done => {{
            let last = '';
            const look = () => {{
                const element = {element}, box = element.getBoundingClientRect(), now = JSON.stringify(box);
                const middle = [box.x + box.width / 2, box.y + box.height / 2], top = document.elementFromPoint(...middle);
                if (now === last && top && (element.contains(top) || top.contains(element)))
                    done(middle);
                else
                    requestAnimationFrame(look);
                last = now;
            }};
            look();
        }})""")
        for kind in ('mousePressed', 'mouseReleased'):
            self.call('Input.dispatchMouseEvent', type=kind, x=x, y=y, button='left', clickCount=1)

    def type(self, text):
        for key in text:
            for kind in ('keyDown', 'keyUp'):
                self.call('Input.dispatchKeyEvent', type=kind, key=key, **({'text': key} if kind == 'keyDown' else {}))

    def wait_for_page(self, url):
        """Until a click has led there."""
        event = self.wait(lambda event: event['method'] == 'Page.frameNavigated' and
                          event['params']['frame']['url'].split('#')[0] == url.split('#')[0])
        self.wait_for_load(event['params']['frame']['loaderId'])

    def shoot(self, file):
        with open(file, 'wb') as picture:
            picture.write(base64.b64decode(self.call('Page.captureScreenshot', format='png')['data']))
