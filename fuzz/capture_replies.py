#!/usr/bin/env python3
# Records the bodies of the replies that pass through it, for seed corpora: a forward proxy
# (libcurl honours http_proxy) that saves each reply under OUT, named by its URL path.
#   python3 fuzz/capture_replies.py 36999 unused OUT &
#   http_proxy=http://127.0.0.1:36999 no_proxy= tolvane-host call --sim --login anchor secret123 ...
import http.server, urllib.request, sys, os, hashlib
UP = sys.argv[2]; OUT = sys.argv[3]
class H(http.server.BaseHTTPRequestHandler):
    def go(self):
        n = int(self.headers.get('Content-Length') or 0)
        body = self.rfile.read(n) if n else None
        req = urllib.request.Request((self.path if self.path.startswith("http") else UP + self.path), data=body, method=self.command)
        for k, v in self.headers.items():
            if k.lower() not in ('host', 'content-length', 'connection'): req.add_header(k, v)
        try:
            r = urllib.request.urlopen(req); code = r.status; data = r.read()
        except urllib.error.HTTPError as e:
            code = e.code; data = e.read()
        if data[:2] == b'\x1f\x8b':
            import gzip; data = gzip.decompress(data)
        name = self.path.split("//",1)[-1].split("/",1)[-1].split('?')[0].strip('/').replace('/', '_') or 'root'
        with open(os.path.join(OUT, name + '-' + hashlib.sha1(data).hexdigest()[:8]), 'wb') as f: f.write(data)
        self.send_response(code); self.send_header('Content-Length', str(len(data))); self.end_headers(); self.wfile.write(data)
    do_GET = go; do_POST = go
    def log_message(self, *a): pass
http.server.ThreadingHTTPServer(('127.0.0.1', int(sys.argv[1])), H).serve_forever()
