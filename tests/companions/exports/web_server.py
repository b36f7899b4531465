"""An nginx on the loopback interface that answers every request and logs it."""

import socket
import subprocess
import time
from pathlib import Path

CONFIGURATION = """
daemon off;
master_process off;
pid {root}/nginx.pid;
error_log {root}/error.log;
events {{ worker_connections 256; }}
http {{
    client_body_temp_path {root}/body; proxy_temp_path {root}/proxy;
    fastcgi_temp_path {root}/fastcgi; uwsgi_temp_path {root}/uwsgi; scgi_temp_path {root}/scgi;
    log_format sent '$http_host|$content_length|$request';
    access_log {root}/access.log combined;
    access_log {root}/sent.log sent;
    large_client_header_buffers 8 256k;
    keepalive_requests 1000000;
    server {{ listen 127.0.0.1:{port}; location / {{ return 200 "ok"; }} }}
}}
"""


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class WebServer:
    """Runs while its block does."""

    def __init__(self, root, programs):
        self.root = Path(root)
        self.nginx = programs / "nginx"
        self.root.mkdir()
        self.port = free_port()
        self.authority = f"127.0.0.1:{self.port}"
        self.process = None

    def __enter__(self):
        configuration = self.root / "nginx.conf"
        configuration.write_text(CONFIGURATION.format(root=self.root, port=self.port))
        command = [self.nginx, "-c", configuration, "-e", self.root / "error.log"]
        self.process = subprocess.Popen(command)
        self.wait_until_it_listens()
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()

    def wait_until_it_listens(self):
        for _ in range(100):
            if self.process.poll() is not None:
                raise RuntimeError("nginx has ended: " + (self.root / "error.log").read_text())
            with socket.socket() as probe:
                if probe.connect_ex(("127.0.0.1", self.port)) == 0:
                    return
            time.sleep(0.1)
        raise RuntimeError("nginx does not listen")

    @property
    def access_log(self):
        return self.root / "access.log"

    def sent(self):
        """Header Host, body size and request line of each request."""
        lines = (self.root / "sent.log").read_text("latin-1").splitlines()
        return [line.split("|", 2) for line in lines]
