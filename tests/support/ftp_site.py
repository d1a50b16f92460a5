"""An FTP server on loopback for tests: accounts, a folder of files, faults on demand, a record of what it was asked.

The one argument is a JSON object:
  root      the folder that every account sees as "/"
  accounts  user name -> password
  drop      path -> [bytes, "data" or "both"]: the transfer is cut off after so many bytes, with the control connection
            or without
  stall     path -> bytes: after so many bytes nothing more of the file comes
  silent    paths whose transfer is never confirmed
  mutters   paths whose transfer is announced with a line too many, which is no reply
  sizes     false: the size of a file is not to be had
  announces path -> bytes: what the server says that the file has
  anonymous true: a login without an account is accepted
  tls       a dialogue can be encrypted, with a certificate that is written to "file" for a "name", valid for so many "days";
            "breaks": it fails behind the offer; "control": the data cannot be; "patient": the data's connection may be spoken on
            before the file is asked for
  auth      what is said of AUTH where it cannot; empty for nothing

The first line of output is "port " and its number, every further one an event: "login NAME", "refused NAME",
"RETR PATH" (the path as it came), "stalled PATH", "silent PATH", "QUIT", "closed". It ends with its standard input.
"""

import json
import logging
import os
import sys
import threading
import warnings

warnings.filterwarnings("ignore", category=DeprecationWarning)

from pyftpdlib.authorizers import DummyAuthorizer  # noqa: E402
from pyftpdlib.handlers import DTPHandler, FTPHandler, TLS_DTPHandler, TLS_FTPHandler  # noqa: E402
from pyftpdlib.servers import FTPServer  # noqa: E402

logging.getLogger("pyftpdlib").disabled = True
SITE = json.loads(sys.argv[1])
TLS = SITE.get("tls")


def note(event):
    sys.stdout.buffer.write(event.encode("utf-8", "surrogateescape") + b"\n")
    sys.stdout.buffer.flush()


class Data(TLS_DTPHandler if TLS else DTPHandler):
    def limit(self):
        """Bytes that are sent before the fault, or None."""
        path = self.cmd_channel.path
        drop = SITE.get("drop", {}).get(path)
        return drop[0] if drop else SITE.get("stall", {}).get(path)

    def readable(self):
        return TLS and TLS.get("patient") and not self._initialized or super().readable()

    def use_sendfile(self):
        return self.limit() is None and super().use_sendfile()

    def send(self, data):
        limit = self.limit()
        if limit is None or self.file_obj is None:
            return super().send(data)
        if self.tot_bytes_sent < limit:
            return super().send(data[:limit - self.tot_bytes_sent])
        control = self.cmd_channel
        drop = SITE.get("drop", {}).get(control.path)
        if not drop:
            note("stalled " + control.path)
            self.ioloop.modify(self._fileno, 0)
        elif drop[1] == "both":
            control.close()
        else:
            self.handle_close()
        return 0


class Control(TLS_FTPHandler if TLS else FTPHandler):
    dtp_handler = Data
    auth_failed_timeout = 0
    banner = "ready"
    unicode_errors = "surrogateescape"
    path = None
    proto_cmds = {**FTPHandler.proto_cmds, **TLS_FTPHandler.proto_cmds}      # AUTH is heard in every case

    def on_login(self, username):
        note("login " + username)

    def on_login_failed(self, username, password):
        note("refused " + username)

    def on_disconnect(self):
        note("closed")

    def pre_process_command(self, line, cmd, arg):
        if cmd == "RETR":
            self.path = arg
            note("RETR " + arg)
        elif cmd == "QUIT":
            note("QUIT")
        super().pre_process_command(line, cmd, arg)

    def ftp_AUTH(self, line):
        if TLS and not TLS.get("breaks"):
            return super().ftp_AUTH(line)
        if TLS or "auth" in SITE:
            self.respond("234 now" if TLS else SITE["auth"])
        else:
            self.respond("500 What?")

    def ftp_PROT(self, line):
        if TLS.get("control"):
            return self.respond("534 Not for the data.")
        note("PROT " + line)
        return super().ftp_PROT(line)

    def ftp_SIZE(self, path):
        announced = SITE.get("announces", {}).get(self.fs.fs2ftp(path))
        if announced is not None:
            self.respond("213 %d" % announced)
        elif SITE.get("sizes", True):
            return super().ftp_SIZE(path)
        else:
            self.respond("502 Not offered.")

    def respond(self, resp, logfun=logging.getLogger("pyftpdlib").debug):
        if not resp:
            return
        if resp.startswith("226") and self.path in SITE.get("silent", []):
            note("silent " + self.path)
        elif resp[:3] in ("125", "150") and self.path in SITE.get("mutters", []):
            super().respond(resp + "\r\n.mutter", logfun)
        else:
            super().respond(resp, logfun)


def make_certificate():
    from cryptography import x509
    from cryptography.hazmat.primitives import hashes, serialization
    from cryptography.hazmat.primitives.asymmetric import ec
    import datetime
    import ipaddress
    key = ec.generate_private_key(ec.SECP256R1())
    name = x509.Name([x509.NameAttribute(x509.NameOID.COMMON_NAME, "site")])
    end = datetime.datetime.utcnow() + datetime.timedelta(days=TLS["days"])
    certificate = x509.CertificateBuilder(
        name, name, key.public_key(), 1, end - datetime.timedelta(days=9), end).add_extension(
        x509.SubjectAlternativeName([x509.IPAddress(ipaddress.ip_address(TLS["name"]))]), False).add_extension(
        x509.BasicConstraints(True, None), True).sign(key, hashes.SHA256())
    with open(TLS["file"], "wb") as file:
        file.write(certificate.public_bytes(serialization.Encoding.PEM))
        file.write(key.private_bytes(serialization.Encoding.PEM, serialization.PrivateFormat.PKCS8,
                                     serialization.NoEncryption()))
    Control.certfile = TLS["file"]


def main():
    if TLS:
        make_certificate()
    authorizer = DummyAuthorizer()
    for name, password in SITE.get("accounts", {}).items():
        authorizer.add_user(name, password, SITE["root"], perm="elr")
    if SITE.get("anonymous"):
        authorizer.add_anonymous(SITE["root"])
    Control.authorizer = authorizer
    server = FTPServer(("127.0.0.1", 0), Control)
    threading.Thread(target=lambda: (sys.stdin.read(), os._exit(0)), daemon=True).start()
    note("port %d" % server.address[1])
    server.serve_forever(handle_exit=False)


main()
