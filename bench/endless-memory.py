#!/usr/bin/env python3
"""Peak memory of tidemark and of every child it starts, against feeds that never stop.

    python3 bench/endless-memory.py [build] [--feeds bridge|all] [--seconds 20]

A server process answers every request with a 200 and a body without a length, written as fast
as the socket takes it. `--feeds bridge` sends only the stock-sdk bridge there (the text feeds
are refused); `--feeds all` sends the app's own Tencent and Sina requests there too. Two runs:
`tidemark --quotes --source stockSDK` to its end, then the desktop app (off-screen platform, a
private home whose preferences select stockSDK) for `--seconds`. Each process's VmHWM is read
from /proc every 5 ms; a child's figure starts when it runs its own program (until then a fork
is a copy of the app).
"""

import argparse
import json
import multiprocessing
import os
import shutil
import socket
import subprocess
import sys
import tempfile
import threading
import time

KINDS = ("--quotes", "--timeline", "--search", "--health")


def serve_endless(listener):
    block = b"x" * 65536

    def answer(connection):
        with connection:
            try:
                request = b""
                while b"\r\n\r\n" not in request:
                    chunk = connection.recv(4096)
                    if not chunk:
                        return
                    request += chunk
                connection.sendall(b"HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\n"
                                   b"Connection: close\r\n\r\n")
                while True:
                    connection.sendall(block)
            except OSError:
                pass

    while True:
        connection, _ = listener.accept()
        threading.Thread(target=answer, args=(connection,), daemon=True).start()


def children(pid):
    found = []
    try:
        for task in os.listdir(f"/proc/{pid}/task"):
            with open(f"/proc/{pid}/task/{task}/children") as listing:
                found += [int(child) for child in listing.read().split()]
    except OSError:
        pass
    return found


def read(pid, name):
    try:
        with open(f"/proc/{pid}/{name}", "rb") as file:
            return file.read().decode(errors="replace")
    except OSError:
        return ""


def high_water_kb(pid):
    for line in read(pid, "status").splitlines():
        if line.startswith("VmHWM:"):
            return int(line.split()[1])
    return 0


def measure(command, environment, seconds):
    """Runs the command until it ends or `seconds` pass; returns the peaks and the most
    children of each kind alive at once."""
    process = subprocess.Popen(command, env=environment, stdout=subprocess.PIPE,
                               stderr=subprocess.DEVNULL)
    app_peak, peaks, lines, most = 0, {}, {}, dict.fromkeys(KINDS, 0)
    start = time.monotonic()
    while process.poll() is None and time.monotonic() - start < seconds:
        alive = dict.fromkeys(KINDS, 0)
        pending = children(process.pid)
        while pending:
            pid = pending.pop()
            pending += children(pid)
            line = read(pid, "cmdline").replace("\0", " ").strip()
            if not line:
                continue
            if lines.get(pid) != line:
                lines[pid], peaks[pid] = line, 0
            peaks[pid] = max(peaks[pid], high_water_kb(pid))
            for kind in KINDS:
                alive[kind] += kind in line
        for kind in KINDS:
            most[kind] = max(most[kind], alive[kind])
        app_peak = max(app_peak, high_water_kb(process.pid))
        time.sleep(0.005)
    if process.poll() is None:
        process.terminate()
    output = process.communicate()[0].decode(errors="replace")
    return app_peak, [(lines[pid], peak) for pid, peak in peaks.items()], most, output


def private_home(folder, source_mode):
    for name in ("home", "config/Tidemark", "data", "runtime"):
        os.makedirs(os.path.join(folder, name), exist_ok=True)
    os.chmod(os.path.join(folder, "runtime"), 0o700)
    preferences = {"activeID": "600519", "theme": "dark", "reduceMotion": True,
                   "refreshInterval": 2.6, "sourceMode": source_mode, "masked": False,
                   "orbSize": 96, "autoRotate": False, "menuDensity": 0, "phase": "live",
                   "latencyMS": 86, "updatedAt": 0, "onboardingSeen": True, "alertAbove": True,
                   "alertTriggered": False}
    # Last time's quote of 600519, so the desktop app also asks for its intraday series.
    held = [{"id": "600519", "market": "A股", "name": "贵州茅台", "price": 1400.0,
             "prevClose": 1390.0, "high": 1401.0, "low": 1388.0, "volume": 9,
             "updatedAt": 814000000.0, "source": "tencent"}]

    def stored(value):
        text = json.dumps(value, separators=(",", ":"))
        return '"@ByteArray(' + text.replace("\\", "\\\\").replace('"', '\\"') + ')"'

    with open(os.path.join(folder, "config/Tidemark/Tidemark.conf"), "w") as conf:
        conf.write("[General]\n")
        conf.write(f"tidemark.native.preferences.v2={stored(preferences)}\n")
        conf.write(f"tidemark.native.snapshots.v1={stored(held)}\n")
        conf.write("tidemark.native.watchlist.v1=600519, 00700, NVDA\n")
    environment = dict(os.environ, HOME=f"{folder}/home", XDG_CONFIG_HOME=f"{folder}/config",
                       XDG_DATA_HOME=f"{folder}/data", XDG_RUNTIME_DIR=f"{folder}/runtime",
                       QT_QPA_PLATFORM="offscreen")
    for name in ("DISPLAY", "WAYLAND_DISPLAY"):
        environment.pop(name, None)
    return environment


def report(title, result):
    app_peak, peaks, most, _ = result
    print(f"{title}\n  app: {app_peak / 1024:.1f} MB")
    by_kind = {}
    for line, peak in peaks:
        kind = next((kind for kind in KINDS if kind in line), line)
        by_kind.setdefault(kind, []).append(peak)
    for kind, figures in by_kind.items():
        print(f"  {len(figures)} × {kind[:60]}: highest {max(figures) / 1024:.1f} MB")
    print("  most children of one kind at once: " +
          ", ".join(f"{kind} {count}" for kind, count in most.items()))
    return app_peak <= 80 << 10 and all(peak <= 200 << 10 for _, peak in peaks) and \
        all(count <= 1 for count in most.values())


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", nargs="?", default="build")
    parser.add_argument("--feeds", choices=("bridge", "all"), default="all")
    parser.add_argument("--seconds", type=float, default=20)
    options = parser.parse_args()
    binary = os.path.abspath(os.path.join(options.build, "bin", "tidemark"))

    listener = socket.create_server(("127.0.0.1", 0))
    server = multiprocessing.Process(target=serve_endless, args=(listener,), daemon=True)
    server.start()
    endless = f"http://127.0.0.1:{listener.getsockname()[1]}"
    refused = socket.create_server(("127.0.0.1", 0))
    closed = f"http://127.0.0.1:{refused.getsockname()[1]}"
    refused.close()
    text_feeds = endless if options.feeds == "all" else closed

    with open(os.path.join(os.path.dirname(__file__), "..", "resources",
                           "data-source-config.json")) as bundled:
        endpoints = json.load(bundled)["endpoints"]
    endpoints.update(tencentQuote=f"{text_feeds}/q=", sinaQuote=f"{text_feeds}/list=",
                     stockSDKTencentBase=endless)
    folder = tempfile.mkdtemp(prefix="tidemark-endless-")
    try:
        endpoints_file = os.path.join(folder, "endpoints.json")
        with open(endpoints_file, "w") as file:
            json.dump(endpoints, file)
        print(f"feeds on the endless server: {'every feed' if options.feeds == 'all' else 'the bridge'}")
        environment = private_home(os.path.join(folder, "cli"), "stockSDK")
        quotes = measure([binary, "--quotes", "--source", "stockSDK", "--endpoints",
                          endpoints_file], environment, 60)
        passed = report("tidemark --quotes --source stockSDK", quotes)
        print("  " + quotes[3].strip().splitlines()[-1])
        environment = private_home(os.path.join(folder, "desktop"), "stockSDK")
        desktop = measure([binary, "--endpoints", endpoints_file], environment, options.seconds)
        passed = report(f"desktop app, {options.seconds:g} s", desktop) and passed
    finally:
        server.kill()
        shutil.rmtree(folder, ignore_errors=True)
    print("PASS" if passed else "FAIL (app at most 80 MB, a child 200 MB, one child per kind)")
    return 0 if passed else 1


if __name__ == "__main__":
    sys.exit(main())
