"""The server that everybody is measured against: nginx, over TLS, with pages that were made before."""

import contextlib
import os
import pathlib
import socket
import subprocess
import time

ORIGINS = 20
"""How many ports the origin listens on: each is an origin of its own to a client."""

PAGES = 300

_CONFIGURATION = """
{user}
daemon off;
pid {folder}/nginx.pid;
error_log {folder}/nginx.log;
worker_processes 1;
worker_rlimit_nofile 20000;
events {{ worker_connections 8000; }}
http {{
    access_log off;
    types {{ application/json json; }}
    client_body_temp_path {folder}/temporary;
    proxy_temp_path {folder}/temporary;
    fastcgi_temp_path {folder}/temporary;
    uwsgi_temp_path {folder}/temporary;
    scgi_temp_path {folder}/temporary;
    keepalive_requests 100000000;
    keepalive_timeout 600s;
    ssl_certificate {folder}/leaf.pem;
    ssl_certificate_key {folder}/key.pem;
    ssl_protocols TLSv1.2 TLSv1.3;
    map $arg_per_page $size {{ default 100; "~^(10|30|300|1000)$" $arg_per_page; }}
    map $arg_page $digit {{ default 1; "~(?<last>[0-9])$" $last; }}
    map $arg_page $next {{
        default "";
        "" 2;
{following}
    }}
    map $request_uri $asked {{ default ""; "~^(?<path>[^?]+)" $path; }}
    map $next $link {{
        default '<https://$http_host$asked?per_page=$size&page=$next>; rel="next", <https://$http_host$asked?per_page=$size&page={pages}>; rel="last"';
        "" '<https://$http_host$asked?per_page=$size&page=1>; rel="first"';
    }}
    server {{
{listening}
        root {folder}/www;
        gzip_static always;
        add_header Link $link;
        add_header Cache-Control "private, max-age=60, s-maxage=60";
        add_header Vary "Accept, Authorization, Cookie, X-GitHub-OTP";
        add_header X-RateLimit-Limit 5000;
        add_header X-RateLimit-Remaining 4987;
        add_header X-RateLimit-Reset 1700000000;
        add_header X-GitHub-Media-Type "github.v3; format=json";
        add_header X-Content-Type-Options nosniff;
        add_header Strict-Transport-Security "max-age=31536000; includeSubdomains; preload";
        location ~ ^(/api/v3)?/user/repos$ {{ rewrite ^ /github/$size/$digit.json break; }}
        location = /api/v4/projects {{ rewrite ^ /gitlab/$size/$digit.json break; }}
        location = /small {{ gzip_static off; rewrite ^ /small.json break; }}
        location /body/ {{ }}
        location = /hang {{ proxy_pass http://127.0.0.1:{silent}; }}
    }}
}}
"""


def _listening_sockets(count):
    sockets = [socket.socket() for _ in range(count)]
    for one in sockets:
        one.bind(("127.0.0.1", 0))
    return sockets, [one.getsockname()[1] for one in sockets]


def _write_configuration(folder, ports, silent):
    folder.joinpath("temporary").mkdir(exist_ok=True)
    folder.joinpath("nginx.conf").write_text(
        _CONFIGURATION.format(
            user="user root;" if os.getuid() == 0 else "",
            folder=folder,
            following="\n".join(f"        {page} {page + 1};" for page in range(1, PAGES)),
            listening="\n".join(
                f"        listen 127.0.0.1:{port} ssl http2 backlog=1024;" for port in ports
            ),
            pages=PAGES,
            silent=silent,
        )
    )


def _answers(port):
    with contextlib.suppress(OSError), socket.create_connection(("127.0.0.1", port), 1):
        return True
    return False


def _start(folder):
    """nginx and its ports; between finding a free port and using it somebody may take it."""
    for _ in range(5):
        sockets, ports = _listening_sockets(ORIGINS)
        silent = socket.socket()  # accepts connections, never says a word
        silent.bind(("127.0.0.1", 0))
        silent.listen(1024)
        _write_configuration(folder, ports, silent.getsockname()[1])
        for one in sockets:
            one.close()
        process = subprocess.Popen(
            ["nginx", "-p", folder, "-c", folder / "nginx.conf"], stderr=subprocess.DEVNULL
        )
        for _ in range(100):
            if process.poll() is not None:
                break
            if _answers(ports[-1]):
                return process, ports, silent
            time.sleep(0.05)
        process.terminate()
        process.wait()
        silent.close()
    raise SystemExit("nginx does not start:\n" + folder.joinpath("nginx.log").read_text())


class Origin:
    def __init__(self, folder, ports):
        self.port = ports[0]
        self.ports = ports
        self.authorities = folder / "ca.pem"
        self.page = folder / "page.json"
        self.bundle = folder / "bundle.pem"
        """The system's authorities and our own."""


@contextlib.contextmanager
def running(programs, folder):
    """An origin that serves until the block ends. `programs` has bench-content."""
    folder = pathlib.Path(folder)
    subprocess.run([programs / "bench-content", folder], check=True)
    system = pathlib.Path("/etc/ssl/certs/ca-certificates.crt").read_text()
    folder.joinpath("bundle.pem").write_text(system + folder.joinpath("ca.pem").read_text())
    process, ports, silent = _start(folder)
    try:
        yield Origin(folder, ports)
    finally:
        process.terminate()  # the master ends its workers
        process.wait()
        silent.close()
