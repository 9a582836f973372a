# Serves one firmware image on loopback, well and badly, and writes its port to standard output:
# /good.fw is whole, /cut.fw ends early, /stall.fw never goes on, all else is not there.
import http.server
import time

IMAGE = b"TVRFW TVR-F1602 2.91a0\n" + bytes(200000)


class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        if self.path not in ("/good.fw", "/cut.fw", "/stall.fw"):
            self.send_error(404)
            return
        self.send_response(200)
        self.send_header("Content-Length", str(len(IMAGE)))
        self.end_headers()
        if self.path == "/good.fw":
            self.wfile.write(IMAGE)
            return
        self.wfile.write(IMAGE[:1000])
        self.wfile.flush()
        if self.path == "/stall.fw":
            time.sleep(600)

    def log_message(self, *arguments):
        pass


server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
server.daemon_threads = True
print(server.server_port, flush=True)
server.serve_forever()
