#!/usr/bin/env python3
"""A minimal editor to start from: a flat world where AI clients find, place and take back objects.

docs/bridge.md is the contract. One thread does everything and no operation waits, so requests are
carried out one by one, and a cancel or a deadline always comes too late to matter.
"""
import argparse, fcntl, json, os, secrets, selectors, signal, socket, stat, struct, sys, time
from contextlib import ExitStack, suppress
from pathlib import Path

BRIDGE = "zorvik-bridge/1"
LINE_LIMIT = 16 * 1024 * 1024
CLIENT_LIMIT = 64
SIDE = 512  # Of the world, in metres.
ASSETS = ("zorvik_rocha", "zorvik_arvore")
ENDS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)


class Refused(Exception):
    """Ends an operation, with a code and a message. Nothing may have changed yet."""


# Whoever has the token can write to the pipe, so the server's checks aren't relied on. What this
# editor doesn't know is refused: to ignore it would be to do something else than was asked.
def check(args, needed, optional):
    if not isinstance(args, dict) or not args.keys() >= needed.keys():
        raise Refused("invalid_argument", f"Era esperado um objeto com {', '.join(needed) or 'nada'}.")
    for name, value in args.items():
        fits = (needed | optional).get(name)
        if not fits:
            raise Refused("unsupported", f"Este editor nao tem o argumento {name[:64]}.")
        if not fits(value):
            raise Refused("invalid_argument", f"O valor de {name} nao serve.")


def text(value):
    return isinstance(value, str) and len(value) <= 96


def whole(low, high=2**53):  # For Python `true` is a number as well.
    return lambda value: type(value) is int and low <= value <= high


def place(value):  # No range holds NaN.
    return type(value) in (int, float) and -SIDE / 2 <= value <= SIDE / 2


CHANGE = {"request_id": text, "label": text, "group": text, "base_revision": whole(0),
          "wait_ms": whole(0)}  # Nobody drags anything here, so nothing is waited for.


class World:
    def __init__(self):
        self.revision = 1
        # By id. An object is replaced and never altered, since the history holds it too. One is
        # there from the start, so that clients see an asset.
        self.objects = {1: {"id": 1, "rev": 1, "asset": ASSETS[0], "x": 0, "y": 0, "z": 0}}
        self.last_id = 1
        # A transaction and its {object id: (before, after)}; the first has the id 1.
        self.history = []
        self.answers = {}  # By client and request_id. They live as long as the history.
        self.reads = {"world.capabilities": self.capabilities, "world.info": self.info,
                      "objects.query": self.query}
        self.changes = {"objects.create": self.create, "history.revert": self.revert}

    def answer(self, op, args, client):
        if op in self.reads:
            return {"ok": True, "revision": self.revision, "result": self.reads[op](args)}
        if op not in self.changes:
            raise Refused("unsupported", f"Este editor nao tem a operacao {op[:64]}.")
        request_id = args.get("request_id") if isinstance(args, dict) else None
        key = (client, request_id) if text(request_id) else None
        if key in self.answers:
            return self.answers[key]
        result = self.changes[op](args, client)
        answer = {"ok": True, "revision": self.revision, "result": result}
        if key:
            self.answers[key] = answer
        return answer

    def capabilities(self, args):
        check(args, {}, {})
        return {"versions": {"bridge": BRIDGE}, "units": {"length": "metros"},
                "axes": {"x": "leste", "y": "cima", "z": "sul"}, "rotation": "nenhuma",
                "limits": {"clients": CLIENT_LIMIT}, "world_kinds": ["monolitico"],
                "families": ["leitura", "objetos", "historico"], "assets": ASSETS,
                "operations": [*self.reads, *self.changes]}

    def info(self, args):
        check(args, {}, {})
        return {"world_id": "minimo", "project": "Minimo", "file": "", "kind": "monolitico",
                "name": "Mundo minimo", "counts": {"objects": len(self.objects)},
                "terrain": {"width": SIDE, "depth": SIDE, "resolution": 2, "step_x": SIDE,
                            "step_z": SIDE, "min_height": 0, "max_height": 0},
                "dirty": self.revision > 1, "gesture_open": False, "ai_allowed": True}

    def query(self, args):
        check(args, {}, {"limit": whole(1, 200), "cursor": lambda at: text(at) and at.isdecimal()})
        rest = sorted(id for id in self.objects if id > int(args.get("cursor", 0)))
        page = rest[:args.get("limit", 50)]
        more = {"next_cursor": str(page[-1])} if len(page) < len(rest) else {}
        return {"objects": [self.objects[id] for id in page], "total": len(self.objects)} | more

    def create(self, args, client):
        check(args, {"objects": lambda all: isinstance(all, list) and 1 <= len(all) <= 256}, CHANGE)
        changes, created = {}, []
        for id, given in enumerate(args["objects"], self.last_id + 1):
            check(given, {"asset": text, "x": place, "z": place}, {"y": place, "ref": text})
            asset = given["asset"]
            if asset not in ASSETS:
                raise Refused("not_found", f"Nao ha o asset {asset}; ha {', '.join(ASSETS)}.")
            changes[id] = (None, {"id": id, "rev": self.revision + 1, "asset": asset,
                                  "x": given["x"], "y": given.get("y", 0), "z": given["z"]})
            created.append({"id": id} | ({"ref": given["ref"]} if "ref" in given else {}))
        transaction = self.commit(changes, "Criar objetos", args, client)
        self.last_id += len(changes)
        return {"created": created, "objects": [made for _, made in changes.values()],
                "transaction": transaction}

    def revert(self, args, client):
        check(args, {"transaction": whole(1)}, CHANGE)
        number = args["transaction"]
        if number > len(self.history):
            raise Refused("not_found", f"Nao ha a transacao {number}.")
        changes = {}
        reverted, done = self.history[number - 1]
        for id, (before, after) in done.items():
            if self.objects.get(id) is not after:
                raise Refused("conflict", f"O objeto {id} mudou depois da transacao {number}.")
            changes[id] = (after, before and before | {"rev": self.revision + 1})
        transaction = self.commit(changes, f"Reverter a transacao {number}", args, client)
        return {"reverted": reverted | {"undone": True}, "transaction": transaction}

    def commit(self, changes, label, args, client):
        # All checks come before, and nothing fails from here on: that makes a change whole.
        for id, (_, after) in changes.items():
            if after:
                self.objects[id] = after
            else:
                del self.objects[id]
        self.revision += 1
        transaction = {
            "id": len(self.history) + 1, "kind": "edit", "author": "agent", "client": client,
            "label": args.get("label", label), "group": args.get("group", ""), "undone": False,
            "base_revision": self.revision - 1, "revision": self.revision,
            "elements": [{"type": "object", "id": id, "change": "created" if after else "deleted"}
                         for id, (_, after) in changes.items()]}
        self.history.append((transaction, changes))
        return transaction


class Client:
    """One connection. Nothing waits for it: bytes stay here until they make a line, or can go."""

    def __init__(self, connection, world, token):
        connection.setblocking(False)
        self.connection, self.world, self.token = connection, world, token
        self.received, self.unsent = bytearray(), bytearray()
        self.let_in = self.leaving = False

    def turn(self, readable):
        """Takes and sends what it can. False when the connection is over."""
        with suppress(BlockingIOError):
            if readable:
                data = self.connection.recv(65536)
                self.received += data
                if b"\n" in data:
                    *lines, self.received = self.received.split(b"\n")
                    for line in lines:
                        self.take(line)
                if not data or len(self.received) > LINE_LIMIT:
                    return False
            if self.unsent:
                del self.unsent[:self.connection.send(self.unsent)]
        return bool(self.unsent) or not self.leaving

    def take(self, line):
        try:
            message = json.loads(line.decode())
        except (ValueError, RecursionError):
            return
        if self.leaving or not isinstance(message, dict) or type(message.get("id")) is not int:
            return
        try:
            answer = self.answer(message)
        except Refused as refused:
            code, reason = refused.args
            answer = {"ok": False, "error": {"code": code, "message": reason}}
        # JSON can escape half a character, which UTF-8 can't hold. It becomes a question mark.
        line = json.dumps({"id": message["id"]} | answer, ensure_ascii=False)
        self.unsent += line.encode(errors="replace") + b"\n"

    def answer(self, message):
        names = (message.get("op"), message.get("client"))
        op, client = (name if isinstance(name, str) else "" for name in names)
        known = message.get("token") == self.token
        if op == "hello":
            self.let_in = known and message.get("bridge") == BRIDGE
            self.leaving = not self.let_in
        if not known or not (self.let_in or self.leaving):
            raise Refused("unauthorized", "O token nao e o deste editor, ou faltou o hello.")
        if self.leaving:
            raise Refused("unsupported_bridge", f"Este editor fala {BRIDGE}.")
        if op in ("hello", "cancel"):
            return {"ok": True}
        return self.world.answer(op, message.get("args"), client)


def is_closed(folder):
    with suppress(OSError):
        about = folder.lstat()
        private = about.st_uid == os.geteuid() and about.st_mode & 0o077 == 0
        return private and stat.S_ISDIR(about.st_mode)
    return False


def user_folder():
    run = Path(f"/run/user/{os.geteuid()}")
    folder = run / "zorvik" if is_closed(run) else Path(f"/tmp/zorvik-{os.geteuid()}")
    with suppress(FileExistsError):
        folder.mkdir()
    if not is_closed(folder):
        sys.exit(f"A pasta {folder} tem de ser sua e fechada aos outros.")
    return folder


def home_folder():
    if os.environ.get("ZORVIK_MCP_HOME"):
        return Path(os.environ["ZORVIK_MCP_HOME"])
    return Path(os.environ.get("LOCALAPPDATA") or user_folder()) / "ZORVIK" / "mcp"


def open_pipe(name, cleanup):
    lock_path, path = (user_folder() / (name + end) for end in (".lock", ".sock"))
    lock = os.open(lock_path, os.O_RDWR | os.O_CREAT | os.O_NOFOLLOW, 0o600)
    cleanup.callback(os.close, lock)
    fcntl.lockf(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)  # Who holds it serves the name.
    cleanup.callback(lock_path.unlink, missing_ok=True)
    path.unlink(missing_ok=True)
    listener = cleanup.enter_context(socket.socket(socket.AF_UNIX))
    cleanup.callback(path.unlink, missing_ok=True)
    listener.bind(str(path))
    path.chmod(0o600)
    listener.listen()
    listener.setblocking(False)
    return listener


def write_record(record, cleanup):
    path = home_folder() / "editors" / f"{record['pid']}.json"
    path.parent.mkdir(parents=True, exist_ok=True)
    whole = path.with_name(path.name + ".tmp")  # Readers come at any time and must not find a part.
    for file in (whole, path):
        cleanup.callback(file.unlink, missing_ok=True)
    with whole.open("wb") as file:
        file.write(json.dumps(record).encode() + b"\n")
        file.flush()
        os.fsync(file.fileno())
    whole.rename(path)


def serve(listener, world, token):
    selector = selectors.DefaultSelector()
    selector.register(listener, selectors.EVENT_READ)

    def welcome():
        connection, _ = listener.accept()
        peer = connection.getsockopt(socket.SOL_SOCKET, socket.SO_PEERCRED, 12)
        _, user, _ = struct.unpack("3i", peer)
        if user in (0, os.geteuid()) and len(selector.get_map()) <= CLIENT_LIMIT:
            client = Client(connection, world, token)
            selector.register(connection, selectors.EVENT_READ, client)
        else:
            connection.close()

    while True:
        for key, events in selector.select():
            client, goes_on = key.data, False
            with suppress(OSError):
                goes_on = client.turn(events & selectors.EVENT_READ) if client else welcome()
            if client and goes_on:
                # Who doesn't read its answers isn't read from: they would fill the memory.
                wanted = selectors.EVENT_WRITE if client.unsent else selectors.EVENT_READ
                selector.modify(key.fileobj, wanted, client)
            elif client:
                selector.unregister(key.fileobj)
                key.fileobj.close()


def leave(*_):
    for end in ENDS:
        signal.signal(end, lambda *_: None)  # A second one must not stop the cleaning up.
    sys.exit()


def main():
    parser = argparse.ArgumentParser(description="Um editor minimo, para quem vai escrever um.")
    parser.add_argument("--id", default=f"minimo-{os.getpid()}", help="o nome deste editor")
    editor_id = parser.parse_args().id
    if not 1 <= len(editor_id) <= 64:
        parser.error("--id tem de 1 a 64 caracteres")
    os.umask(0o077)  # Whatever this program makes is the user's alone.
    token, pipe = secrets.token_hex(16), f"zorvik-{os.getpid()}-{secrets.token_hex(8)}"
    record = {"editor_id": editor_id, "pid": os.getpid(), "pipe": pipe, "token": token,
              "bridge": BRIDGE, "engine_version": "1", "project": os.getcwd(),
              "project_name": "Minimo", "world": "minimo", "world_id": "minimo",
              "started": time.strftime("%Y-%m-%dT%H:%M:%S")}
    with ExitStack() as cleanup:  # It undoes in reverse: the record goes first, the lock last.
        signal.pthread_sigmask(signal.SIG_BLOCK, ENDS)  # Until it is known what there is to undo.
        for end in ENDS:
            signal.signal(end, leave)
        listener = open_pipe(pipe, cleanup)
        write_record(record, cleanup)  # Servers connect as soon as they see it.
        print(f"Editor {editor_id} aberto. Ctrl-C fecha.", flush=True)
        signal.pthread_sigmask(signal.SIG_UNBLOCK, ENDS)
        serve(listener, World(), token)


if __name__ == "__main__":
    main()
