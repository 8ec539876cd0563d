#!/usr/bin/env python3
"""A stand-in for Google on loopback: authorization, token and Calendar v3 endpoints, as strict as the real ones.

    google_stand_in.py [--port N] [--automatic allow|refuse] [--quota N] [--until-eof]

It prints its address. Besides Google's paths it serves /console, where a user makes the client file, and /control: GET /control/client is the client file to sign in
with, GET /control/state everything it holds (or, with ?calendars, that part), and POST /control takes a JSON object with
any of
  calendars       the whole content, in the shape that /control/state gives
  faults          [{"on": "calendar"|"token", "at": n, "times": k, "kind": …}], counted from this call on; the kinds are
                  status (status, reason, headers), text (status, body), cut, reset, hang, delay (seconds);
                  with "after": true the request takes effect first
  page_size, quota, token_lifetime, automatic
  forget_tokens   true: every access token expires now;  revoke: true: every grant is gone
  grant           a scope: answers {"refresh_token": …} as if the user had agreed
"""
import argparse
import base64
import collections
import copy
import hashlib
import html
import json
import os
import re
import secrets
import select
import socket
import struct
import sys
import threading
import time
from datetime import date, datetime, timezone
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from urllib.parse import parse_qs, parse_qsl, unquote, urlencode, urlsplit
from zoneinfo import ZoneInfo, available_timezones

from google_console import Console

SCOPE = "https://www.googleapis.com/auth/calendar."
ZONES = available_timezones()
EVENT_MEMBERS = {"summary", "description", "location", "colorId", "status", "start", "end", "transparency", "visibility",
                 "reminders", "extendedProperties"}


class Refusal(Exception):
    def __init__(self, status, reason, message="", headers=None):
        super().__init__(message or reason)
        self.status, self.reason, self.headers = status, reason, headers or {}


def require(condition, message, status=400, reason="invalid"):
    if not condition:
        raise Refusal(status, reason, message)


class Account:
    """The user's grants: clients, one-time codes, refresh and access tokens."""

    def __init__(self):
        self.client = {"client_id": secrets.token_hex(8) + ".apps.googleusercontent.com",
                       "client_secret": "GOCSPX-" + secrets.token_urlsafe(18)}
        self.codes, self.refresh, self.access = {}, {}, {}
        self.lifetime = 3600
        self.secrets = {self.client["client_secret"]}  # everything that must appear nowhere

    def secret(self, prefix):
        value = prefix + secrets.token_urlsafe(24)
        self.secrets.add(value)
        return value

    def check_authorization(self, query):
        require(query.get("client_id") == self.client["client_id"], "invalid_client")
        require(re.fullmatch(r"http://127\.0\.0\.1:[1-9]\d*", query.get("redirect_uri", "")), "redirect_uri_mismatch")
        require(query.get("response_type") == "code", "response_type")
        require(query.get("scope") in (SCOPE + "app.created", SCOPE + "events"), "invalid_scope")
        require(query.get("code_challenge_method") == "S256", "code_challenge_method")
        require(re.fullmatch(r"[\w-]{43}", query.get("code_challenge", ""), re.ASCII), "code_challenge")
        require(query.get("state"), "state")

    def callback(self, query, agreed):
        answer = {"state": query["state"], "error": "access_denied"}
        if agreed:
            code = self.secret("4/")
            self.codes[code] = {**query, "expires": time.time() + 600}
            answer = {"state": query["state"], "code": code, "scope": query["scope"]}
        return query["redirect_uri"] + "/?" + urlencode(answer)

    def grant(self, scope):
        token = self.secret("1//")
        self.refresh[token] = scope
        return token

    def token(self, form):
        require(form.get("client_id") == self.client["client_id"]
                and form.get("client_secret") == self.client["client_secret"], "The OAuth client was not found.", 401,
                "invalid_client")
        kind = form.get("grant_type")
        require(kind in ("authorization_code", "refresh_token"), "Invalid grant_type", reason="unsupported_grant_type")
        if kind == "refresh_token":
            refresh = form.get("refresh_token")
            require(refresh in self.refresh, "Token has been expired or revoked.", reason="invalid_grant")
            return self.access_token(refresh)
        code = self.codes.pop(form.get("code"), None)
        require(code and code["expires"] > time.time(), "Malformed auth code.", reason="invalid_grant")
        require(form.get("redirect_uri") == code["redirect_uri"], "Bad Request", reason="redirect_uri_mismatch")
        verifier = form.get("code_verifier", "")
        self.secrets.add(verifier)
        require(re.fullmatch(r"[\w.~-]{43,128}", verifier, re.ASCII), "code_verifier", reason="invalid_request")
        digest = base64.urlsafe_b64encode(hashlib.sha256(verifier.encode()).digest()).decode().rstrip("=")
        require(digest == code["code_challenge"], "Invalid code verifier.", reason="invalid_grant")
        refresh = self.grant(code["scope"])
        offline = code.get("access_type") == "offline" and code.get("prompt") == "consent"
        return {**self.access_token(refresh), **({"refresh_token": refresh} if offline else {})}

    def access_token(self, refresh):
        token = self.secret("ya29.")
        self.access[token] = {"expires": time.time() + self.lifetime, "refresh": refresh}
        return {"access_token": token, "expires_in": self.lifetime, "token_type": "Bearer",
                "scope": self.refresh[refresh]}

    def scope_of(self, header):
        token = self.access.get((header or "").removeprefix("Bearer "))
        require(token and token["expires"] > time.time() and token["refresh"] in self.refresh, "Invalid Credentials",
                401, "authError")
        return self.refresh[token["refresh"]]


def merged(old, patch):
    """What a PATCH makes of a value: members are merged, null takes one away."""
    if not isinstance(patch, dict):
        return patch
    result = dict(old) if isinstance(old, dict) else {}
    for name, value in patch.items():
        if value is None:
            result.pop(name, None)
        else:
            result[name] = merged(result.get(name), value)
    return result


def instant(moment, which):
    require(isinstance(moment, dict) and not set(moment) - {"date", "dateTime", "timeZone"}, f"Invalid {which} time.")
    require(("date" in moment) != ("dateTime" in moment), f"Invalid {which} time.")
    try:
        if "date" in moment:
            require(re.fullmatch(r"\d{4}-\d\d-\d\d", moment["date"], re.ASCII), f"Invalid {which} date.")
            return date.fromisoformat(moment["date"])
        require(re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d(Z|[+-]\d\d:\d\d)?", moment["dateTime"], re.ASCII),
                f"Invalid {which} time.")
        clock = datetime.fromisoformat(moment["dateTime"])
        require(clock.tzinfo or moment.get("timeZone") in ZONES, f"Missing time zone definition for {which} time.")
        return (clock if clock.tzinfo else clock.replace(tzinfo=ZoneInfo(moment["timeZone"]))).astimezone(timezone.utc)
    except (ValueError, TypeError, OverflowError):
        raise Refusal(400, "invalid", f"Invalid {which} time.") from None


def check_event(event):
    start, end = instant(event.get("start"), "start"), instant(event.get("end"), "end")
    require(type(start) is type(end), "Start and end times must either both be date or both be dateTime.")
    require(start < end or (start == end and isinstance(start, datetime)), "The specified time range is empty.",
            reason="timeRangeEmpty")
    for name in ("summary", "description"):
        require(isinstance(event.get(name, ""), str), f"Invalid value for: {name}")
    require(event.get("transparency", "opaque") in ("opaque", "transparent"), "Invalid transparency")
    require(event.get("visibility", "default") in ("default", "public", "private", "confidential"), "Invalid visibility")
    reminders = event.get("reminders", {})
    require(not set(reminders) - {"useDefault", "overrides"}, "Unknown name in reminders")
    require(not (reminders.get("useDefault") and reminders.get("overrides")), "cannotUseDefaultRemindersAndSpecifyOverride")
    properties = event.get("extendedProperties", {})
    require(not set(properties) - {"private", "shared"}, "Unknown name in extendedProperties")
    for kind in properties.values():
        for name, value in kind.items():
            require(isinstance(value, str) and len(name) <= 44 and len(value) <= 1024, "Invalid extended property")


class Calendars:
    """Calendar v3, as far as calendars of one's own and their events go."""

    def __init__(self):
        self.all, self.page_size = {}, 2500

    def serve(self, method, path, query, body, scope):
        parts = [unquote(part) for part in path.removeprefix("/calendar/v3/").split("/")]
        if parts == ["calendars"] and method == "POST":
            return self.create_calendar(body, scope)
        require(parts[0] == "calendars" and len(parts) in (3, 4) and parts[2] == "events", "Not Found", 404, "notFound")
        calendar = self.all.get(parts[1])
        require(calendar and (calendar["created_by_app"] or scope == SCOPE + "events"), "Not Found", 404, "notFound")
        events = calendar["events"]
        if len(parts) == 3:
            if method == "GET":
                return self.listing(events, query)
            require(method == "POST", "Method Not Allowed", 405, "httpMethodNotAllowed")
            return self.write(events, secrets.token_hex(13), body)
        event = events.get(parts[3])
        require(event, "Not Found", 404, "notFound")
        require(event["status"] != "cancelled", "Resource has been deleted", 410, "deleted")
        if method == "PATCH":
            return self.write(events, parts[3], body)
        require(method == "DELETE", "Method Not Allowed", 405, "httpMethodNotAllowed")
        event["status"] = "cancelled"
        return None

    def create_calendar(self, body, scope):
        require(scope == SCOPE + "app.created", "Request had insufficient authentication scopes.", 403,
                "insufficientPermissions")
        require(isinstance(body, dict) and body.get("summary"), "Missing title.", reason="required")
        require(not set(body) - {"summary", "description", "timeZone", "location"}, "Unknown name")
        require(body.get("timeZone", "UTC") in ZONES, "Invalid time zone")
        identifier = secrets.token_hex(16) + "@group.calendar.google.com"
        self.all[identifier] = {**body, "created_by_app": True, "events": {}}
        return {"kind": "calendar#calendar", "id": identifier, **body}

    def write(self, events, identifier, body):
        require(isinstance(body, dict), "Parse Error", reason="parseError")
        for name in body:
            require(name in EVENT_MEMBERS, f'Invalid JSON payload received. Unknown name "{name}"', reason="badRequest")
        fresh = {"kind": "calendar#event", "id": identifier, "status": "confirmed"}
        event = merged(events.get(identifier, fresh), body)
        check_event(event)
        events[identifier] = event
        return event

    def listing(self, events, query):
        known = {"maxResults", "showDeleted", "privateExtendedProperty", "pageToken"}
        for name in query:
            require(name in known, f'Invalid JSON payload received. Unknown name "{name}"', reason="badRequest")
        wanted = [text.partition("=")[::2] for text in query.get("privateExtendedProperty", [])]
        shown = [event for event in events.values()
                 if (event["status"] != "cancelled" or query.get("showDeleted") == ["true"])
                 and all(event.get("extendedProperties", {}).get("private", {}).get(k) == v for k, v in wanted)]
        size = int(query.get("maxResults", ["250"])[0])
        require(1 <= size <= 2500, "Invalid value for maxResults")
        size, first = min(size, self.page_size), 0
        mark = hashlib.sha256(repr(sorted((k, v) for k, v in query.items() if k != "pageToken")).encode()).hexdigest()[:8]
        if "pageToken" in query:
            offset, _, stamp = query["pageToken"][0].partition("+/")
            require(stamp == mark and offset.isdigit(), "Invalid page token value.")
            first = int(offset)
        page = {"kind": "calendar#events", "items": shown[first:first + size]}
        return {**page, "nextPageToken": f"{first + size}+/{mark}"} if first + size < len(shown) else page


class Google:
    def __init__(self, automatic=None, quota=None):
        self.lock = threading.RLock()
        self.account, self.calendars = Account(), Calendars()
        self.console = Console(self.account.client)
        self.automatic, self.quota = automatic, quota
        self.recent = collections.deque()
        self.faults, self.seen, self.log = [], collections.Counter(), []
        self.connections = self.busy = self.overlap = 0

    def control(self, order):
        if "calendars" in order:
            self.calendars.all = copy.deepcopy(order["calendars"])
        if "faults" in order:
            self.faults, self.seen = order["faults"], collections.Counter()
        self.calendars.page_size = order.get("page_size", self.calendars.page_size)
        self.account.lifetime = order.get("token_lifetime", self.account.lifetime)
        self.automatic, self.quota = order.get("automatic", self.automatic), order.get("quota", self.quota)
        if order.get("forget_tokens"):
            self.account.access.clear()
        if order.get("revoke"):
            self.account.refresh.clear()
        if order.get("clear_log"):
            self.log, self.overlap = [], 0
        return {"refresh_token": self.account.grant(order["grant"])} if "grant" in order else {}

    def state(self):
        return {"calendars": self.calendars.all, "log": self.log, "secrets": sorted(self.account.secrets),
                "overlap": self.overlap}

    def fault(self, kind):
        self.seen[kind] += 1
        n = self.seen[kind]
        return next((f for f in self.faults if f.get("on", "calendar") == kind
                     and f["at"] <= n < f["at"] + f.get("times", 1)), None)

    def check_quota(self):
        now = time.monotonic()
        while self.recent and self.recent[0] <= now - 60:
            self.recent.popleft()
        if self.quota and len(self.recent) >= self.quota:
            raise Refusal(403, "rateLimitExceeded", "Rate Limit Exceeded")
        self.recent.append(now)

    def api(self, method, url, headers, body):
        scope = self.account.scope_of(headers.get("Authorization"))
        missing = self.console.missing(scope, ready=True)
        require(not missing, missing, 403, "accessNotConfigured")
        self.check_quota()
        if body:
            require(headers.get("Content-Type", "").startswith("application/json"), "Invalid content type", 415)
            try:
                body = json.loads(body)
            except ValueError:
                raise Refusal(400, "parseError", "Parse Error") from None
        return self.calendars.serve(method, url.path, parse_qs(url.query, keep_blank_values=True), body, scope)


class Handler(BaseHTTPRequestHandler):
    protocol_version, disable_nagle_algorithm, wbufsize = "HTTP/1.1", True, -1
    google = None

    def setup(self):
        super().setup()
        with self.google.lock:
            self.google.connections += 1
            self.number = self.google.connections

    def log_message(self, *_):
        pass

    def send(self, status, text, kind="application/json; charset=UTF-8", headers=None, cut=False):
        data = text.encode()
        self.send_response(status)
        for name, value in {"Content-Type": kind, "Content-Length": str(len(data)), **(headers or {})}.items():
            if not (status == 204 and name == "Content-Length"):
                self.send_header(name, value)
        self.end_headers()
        self.wfile.write(data[:len(data) // 2] if cut else data)
        self.wfile.flush()
        self.close_connection = self.close_connection or cut

    def serve(self):
        url, google = urlsplit(self.path), self.google
        body = self.rfile.read(int(self.headers.get("Content-Length") or 0))
        if url.path.startswith("/control"):
            return self.control(url, body)
        if url.path == "/o/oauth2/v2/auth":
            return self.authorize(url, body)
        if url.path == "/":
            return self.send(200, self.home(), HTML)
        if url.path.startswith("/console"):
            form = dict(parse_qsl(body.decode())) if self.command == "POST" else None
            with google.lock:
                status, text, headers = google.console.serve(url.path, form)
            return self.send(status, text, HTML, headers)
        kind = "token" if url.path == "/token" else "calendar"
        with google.lock:
            google.busy += 1
            google.overlap = max(google.overlap, google.busy)
            fault = google.fault(kind)
        status, text, headers = 200, "{}", {}
        trouble = fault["kind"] if fault else None
        if fault is None or fault.get("after") or trouble in ("cut", "delay"):
            status, text, headers = self.undisturbed(kind, url, body)
        with google.lock:
            google.busy -= 1
            google.log.append({"connection": self.number, "method": self.command, "path": url.path,
                               "query": url.query, "status": status, "fault": trouble})
        self.answer(kind, fault or {}, trouble, status, text, headers)

    def answer(self, kind, fault, trouble, status, text, headers):
        if trouble in ("reset", "hang"):
            if trouble == "hang":
                select.select([self.connection], [], [], 120)
            # Lingering for no time makes the kernel send RST.
            self.connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
            self.close_connection = True
            return self.connection.close()
        if trouble == "delay":
            time.sleep(fault["seconds"])
        if trouble == "status":
            status, headers = fault["status"], fault.get("headers", {})
            text = self.error(kind, status, fault.get("reason", "backendError"), "Injected")
        if trouble == "text":
            status, text = fault.get("status", 200), fault["body"]
        if trouble == "cut" and status == 204:  # nothing to cut there
            status, text = 200, "{}"
        return self.send(status, text, headers=headers, cut=trouble == "cut")

    def undisturbed(self, kind, url, body):
        try:
            with self.google.lock:
                if kind == "token":
                    require(self.command == "POST" and self.headers.get("Content-Type", "").startswith(
                        "application/x-www-form-urlencoded"), "Bad Request", reason="invalid_request")
                    result = self.google.account.token(dict(parse_qsl(body.decode())))
                else:
                    require(url.path.startswith("/calendar/v3/"), "Not Found", 404, "notFound")
                    result = self.google.api(self.command, url, self.headers, body)
            return (204, "", {}) if result is None else (200, json.dumps(result, ensure_ascii=False), {})
        except Refusal as refusal:
            return refusal.status, self.error(kind, refusal.status, refusal.reason, str(refusal)), refusal.headers

    @staticmethod
    def error(kind, status, reason, message):
        if kind == "token":
            return json.dumps({"error": reason, "error_description": message})
        return json.dumps({"error": {"errors": [{"domain": "global", "reason": reason, "message": message}],
                                     "code": status, "message": message}})

    def control(self, url, body):
        with self.google.lock:
            if url.path == "/control/client":
                self.send(200, json.dumps({"installed": self.google.account.client}),
                          headers={"Content-Disposition": 'attachment; filename="client_secret_essai.json"'})
            elif url.path == "/control/state":
                state = self.google.state()
                self.send(200, json.dumps(state[url.query] if url.query else state, ensure_ascii=False))
            else:
                self.send(200, json.dumps(self.google.control(json.loads(body))))

    def home(self):
        """For people: the client file, and what the calendars hold."""
        with self.google.lock:
            events = [event for calendar in self.google.calendars.all.values() for event in calendar["events"].values()
                      if event["status"] != "cancelled"]
        rows = sorted((str(event["start"].get("date") or event["start"]["dateTime"]), event["summary"]) for event in events)
        return HOME % "".join(f"<li>{html.escape(' · '.join(row))}</li>" for row in rows)

    def authorize(self, url, body):
        query = dict(parse_qsl(url.query))
        with self.google.lock:
            try:
                self.google.account.check_authorization(query)
                missing = self.google.console.missing(query["scope"], ready=False)
                require(not missing, missing)
            except Refusal as refusal:
                return self.send(400, f"<!doctype html><h1>Erreur 400</h1><p>{html.escape(str(refusal))}", "text/html")
            choice = self.google.automatic or dict(parse_qsl(body.decode())).get("answer")
            if choice in ("allow", "refuse"):
                return self.send(302, "", headers={"Location": self.google.account.callback(query, choice == "allow")})
        return self.send(200, CONSENT % html.escape(query["scope"]) if choice else UNKNOWN, HTML)

    do_GET = do_POST = do_PATCH = do_DELETE = serve


HTML = "text/html; charset=utf-8"

HOME = """<!doctype html><html lang="fr"><meta charset="utf-8"><title>Remplaçant de Google</title>
<body style="font:16px sans-serif;max-width:36em;margin:4em auto"><h1>Remplaçant de Google</h1>
<p><a href="/control/client" id="client">Télécharger le fichier client</a>, ou le fabriquer dans
<a href="/console">la console</a></p><h2>Agenda</h2><ul>%s</ul></body></html>"""

UNKNOWN = """<!doctype html><html lang="fr"><meta charset="utf-8"><title>Se connecter</title>
<body style="font:16px sans-serif;max-width:28em;margin:4em auto;text-align:center">
<h1>Google n'a pas validé cette application</h1><form method="post"><button name="answer" value="go on">Continuer</button>
</form></body></html>"""

CONSENT = """<!doctype html><html lang="fr"><meta charset="utf-8"><title>Se connecter</title>
<body style="font:16px sans-serif;max-width:28em;margin:4em auto;text-align:center">
<h1>Tacla souhaite accéder à votre agenda</h1><p><code>%s</code></p><p>Ceci n'est pas Google : un remplaçant, pour essayer.</p>
<form method="post"><button name="answer" value="refuse" id="refuse">Refuser</button>
<button name="answer" value="allow" id="allow">Autoriser</button></form></body></html>"""


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--port", type=int, default=0)
    parser.add_argument("--automatic", choices=("allow", "refuse"))
    parser.add_argument("--quota", type=int, help="calendar requests a minute")
    parser.add_argument("--until-eof", action="store_true", help="end when standard input does")
    options = parser.parse_args()
    Handler.google = Google(options.automatic, options.quota)
    server = ThreadingHTTPServer(("127.0.0.1", options.port), Handler)
    server.daemon_threads = True
    print(f"http://127.0.0.1:{server.server_address[1]}", flush=True)
    if options.until_eof:
        threading.Thread(target=lambda: (sys.stdin.read(), os._exit(0)), daemon=True).start()
    try:
        server.serve_forever()
    except KeyboardInterrupt:
        pass


if __name__ == "__main__":
    main()
