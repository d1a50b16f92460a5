"""An HTTP proxy on loopback for tests, which has a file of 3000 bytes at every address.

The first line of output is "port " and its number, every further one "GET " and the address as it was asked for. It ends
with its standard input.
"""

import http.server
import os
import sys
import threading


class Handler(http.server.BaseHTTPRequestHandler):
    def log_message(self, format, *args):
        pass

    def do_GET(self):
        print("GET " + self.path, flush=True)
        self.send_response(200)
        self.send_header("Content-Length", "3000")
        self.end_headers()
        self.wfile.write(bytes(3000))


server = http.server.HTTPServer(("127.0.0.1", 0), Handler)
threading.Thread(target=lambda: (sys.stdin.read(), os._exit(0)), daemon=True).start()
print("port %d" % server.server_port, flush=True)
server.serve_forever()
