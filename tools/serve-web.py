#!/usr/bin/env python3
"""tools/serve-web.py SITE [PORT]: serves the viewer site on 127.0.0.1 as a
cross-origin isolated page (the headers Cross-Origin-Opener-Policy:
same-origin and Cross-Origin-Embedder-Policy: require-corp), so that
quarl.mjs loads its module with threads and reads on every core. Any other
static server serves the site too; the module then reads on one thread."""
import http.server
import sys
from functools import partial


class IsolatingHandler(http.server.SimpleHTTPRequestHandler):
    extensions_map = {**http.server.SimpleHTTPRequestHandler.extensions_map,
                      ".mjs": "text/javascript", ".js": "text/javascript", ".wasm": "application/wasm"}

    def end_headers(self):
        self.send_header("Cross-Origin-Opener-Policy", "same-origin")
        self.send_header("Cross-Origin-Embedder-Policy", "require-corp")
        super().end_headers()


def main():
    if len(sys.argv) not in (2, 3):
        print(__doc__.strip(), file=sys.stderr)
        return 2
    port = int(sys.argv[2]) if len(sys.argv) == 3 else 8000
    server = http.server.ThreadingHTTPServer(("127.0.0.1", port), partial(IsolatingHandler, directory=sys.argv[1]))
    print("serving %s at http://127.0.0.1:%d/ (cross-origin isolated)" % (sys.argv[1], server.server_address[1]))
    try:
        server.serve_forever()
    except KeyboardInterrupt:
        pass
    return 0


if __name__ == "__main__":
    sys.exit(main())
