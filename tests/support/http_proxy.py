"""An HTTP proxy on loopback for tests, which fetches ftp:// addresses and keeps a record of them.

The one argument is a JSON object; with "answer": [status, body] every request gets that answer instead, a status of 3xx
with a place to go to. The first line of output is "port " and its number, every further one "GET " and the address as
it was asked for. It ends with its standard input.
"""

import http.server
import json
import os
import sys
import threading
import urllib.error
import urllib.request

PROXY = json.loads(sys.argv[1])
FETCH = urllib.request.build_opener(urllib.request.ProxyHandler({}))


def note(event):
    print(event, flush=True)


class Handler(http.server.BaseHTTPRequestHandler):
    def log_message(self, format, *args):
        pass

    def do_GET(self):
        note("GET " + self.path)
        status, body = PROXY.get("answer") or self.fetch()
        body = body.encode() if isinstance(body, str) else body
        self.send_response(status)
        if 300 <= status < 400:
            self.send_header("Location", "http://127.0.0.1:9/")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def fetch(self):
        try:
            with FETCH.open(self.path, timeout=10) as response:
                return 200, response.read()
        except urllib.error.URLError as error:
            return 502, "<html>%s</html>" % error


def main():
    server = http.server.HTTPServer(("127.0.0.1", 0), Handler)
    threading.Thread(target=lambda: (sys.stdin.read(), os._exit(0)), daemon=True).start()
    note("port %d" % server.server_port)
    server.serve_forever()


main()
