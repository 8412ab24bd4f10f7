#!/usr/bin/env python3
"""A minimal editor to start from: a flat world where AI clients find, place and take back objects.

docs/bridge.md is the contract. One thread does everything and no operation waits, so requests are
carried out one by one, and a cancel or a deadline always comes too late to matter.
"""
import argparse, asyncio, fcntl, json, os, secrets, signal, socket, stat, struct, sys, time
from pathlib import Path

BRIDGE = "zorvik-bridge/1"
LINE_LIMIT = 16 * 1024 * 1024
SIDE = 512  # Of the world, in metres.
ASSETS = ("zorvik_rocha", "zorvik_arvore")


class Refused(Exception):
    """Ends an operation, with a code and a message. Nothing may have changed yet."""


def require(good, message, code="invalid_argument"):
    if not good:
        raise Refused(code, message)


# Whoever has the token can write to the pipe, so the server's checks aren't relied on. What this
# editor doesn't know is refused: to ignore it would be to do something else than was asked.
def check(args, needed, optional=()):
    require(isinstance(args, dict) and all(name in args for name in needed), f"Falta {needed}.")
    for name in args:
        require(name in needed + optional, f"Sem suporte a {name[:64]}.", "unsupported")


def number(value, low, high, kind=(int, float)):  # For Python `true` is a number as well.
    require(isinstance(value, kind) and not isinstance(value, bool) and low <= value <= high,
            f"Era esperado um numero de {low} a {high}.")
    return value


class World:
    CHANGE = ("request_id", "label", "group", "base_revision", "wait_ms")

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
        require(op in self.changes, f"Este editor nao tem a operacao {op[:64]}.", "unsupported")
        request_id = args.get("request_id") if isinstance(args, dict) else None
        key = (client, request_id) if isinstance(request_id, str) else None
        if key in self.answers:
            return self.answers[key]
        result = self.changes[op](args, client)
        answer = {"ok": True, "revision": self.revision, "result": result}
        if key:
            self.answers[key] = answer
        return answer

    def capabilities(self, args):
        check(args, ())
        return {"versions": {"bridge": BRIDGE}, "units": {"length": "metros"},
                "axes": {"x": "leste", "y": "cima", "z": "sul"}, "world_kinds": ["monolitico"],
                "families": ["leitura", "objetos", "historico"], "assets": ASSETS}

    def info(self, args):
        check(args, ())
        return {"world_id": "minimo", "project": "Minimo", "file": "", "kind": "monolitico",
                "name": "Mundo minimo", "counts": {"objects": len(self.objects)},
                "dirty": self.revision > 1, "gesture_open": False, "ai_allowed": True}

    def query(self, args):
        check(args, (), ("limit", "cursor"))
        limit, cursor = number(args.get("limit", 50), 1, 200, int), str(args.get("cursor", 0))
        require(cursor.isdecimal() and len(cursor) < 16, "Este cursor nao e de objects_query.")
        rest = sorted(id for id in self.objects if id > int(cursor))
        more = {"next_cursor": str(rest[limit - 1])} if len(rest) > limit else {}
        page = [self.objects[id] for id in rest[:limit]]
        return {"objects": page, "total": len(self.objects)} | more

    def create(self, args, client):
        check(args, ("objects",), self.CHANGE)
        given = args["objects"]
        require(isinstance(given, list) and 1 <= len(given) <= 256, "De 1 a 256 objetos.")
        changes, created = {}, []
        for id, one in enumerate(given, self.last_id + 1):
            check(one, ("asset", "x", "z"), ("y", "ref"))
            require(one["asset"] in ASSETS, f"So ha os assets {', '.join(ASSETS)}.", "not_found")
            place = {axis: number(one.get(axis, 0), -SIDE / 2, SIDE / 2) for axis in "xyz"}
            about = {"id": id, "rev": self.revision + 1, "asset": one["asset"]}
            changes[id] = (None, about | place)
            created.append({"id": id} | ({"ref": one["ref"]} if "ref" in one else {}))
        transaction = self.commit(changes, "Criar objetos", args, client)
        self.last_id += len(changes)
        return {"created": created, "objects": [made for _, made in changes.values()],
                "transaction": transaction}

    def revert(self, args, client):
        check(args, ("transaction",), self.CHANGE)
        which = number(args["transaction"], 1, 2**53, int)
        require(which <= len(self.history), f"Nao ha a transacao {which}.", "not_found")
        reverted, done = self.history[which - 1]
        for id, (_, after) in done.items():
            require(self.objects.get(id) is after, f"O objeto {id} mudou depois.", "conflict")
        changes = {id: (after, before and before | {"rev": self.revision + 1})
                   for id, (before, after) in done.items()}
        transaction = self.commit(changes, f"Reverter a transacao {which}", args, client)
        return {"reverted": reverted | {"undone": True}, "transaction": transaction}

    def commit(self, changes, label, args, client):
        # All checks come before, and nothing fails from here on: that makes a change whole.
        for id, (_, after) in changes.items():
            if after:
                self.objects[id] = after
            else:
                del self.objects[id]
        self.revision += 1
        transaction = {"id": len(self.history) + 1, "kind": "edit", "undone": False,
                       "author": "agent", "client": client, "label": args.get("label", label),
                       "base_revision": self.revision - 1, "revision": self.revision}
        self.history.append((transaction, changes))
        return transaction


def answer_to(message, world, token, let_in):
    """The answer to a message, and whether the connection is let in from then on."""
    names = (message.get("op"), message.get("client"))
    op, client = (name if isinstance(name, str) else "" for name in names)
    try:
        known = message.get("token") == token
        known = known and (let_in or op == "hello")
        require(known, "O token nao e o deste editor, ou faltou o hello.", "unauthorized")
        if op == "hello":
            let_in = False
            good = message.get("bridge") == BRIDGE
            require(good, f"Este editor fala {BRIDGE}.", "unsupported_bridge")
            return {"ok": True}, True
        if op == "cancel":
            return {"ok": True}, True
        return world.answer(op, message.get("args"), client), True
    except Refused as refused:
        code, reason = refused.args
        return {"ok": False, "error": {"code": code, "message": reason}}, let_in and op != "hello"


async def talk(reader, writer, world, token):
    """Serves one connection. Others are served while this one waits to read or to write."""
    peer = writer.get_extra_info("socket").getsockopt(socket.SOL_SOCKET, socket.SO_PEERCRED, 12)
    let_in, open = False, struct.unpack("3i", peer)[1] in (0, os.geteuid())
    try:
        while open and (line := await reader.readline()).endswith(b"\n"):
            try:
                message = json.loads(line.decode())
            except (ValueError, RecursionError):
                continue
            if not isinstance(message, dict) or type(message.get("id")) is not int:
                continue
            answer, let_in = answer_to(message, world, token, let_in)
            open = let_in
            # JSON can escape half a character, which UTF-8 can't hold. It becomes a question mark.
            text = json.dumps({"id": message["id"]} | answer, ensure_ascii=False)
            writer.write(text.encode(errors="replace") + b"\n")
            await writer.drain()  # Who doesn't read its answers isn't read from either.
    except (OSError, ValueError):  # The client has gone, or its line is too long.
        pass
    writer.close()


def is_private(folder):
    about = os.lstat(folder)
    mine = about.st_uid == os.geteuid() and about.st_mode & 0o077 == 0
    return mine and stat.S_ISDIR(about.st_mode)


def user_folder():
    run = Path(f"/run/user/{os.geteuid()}")
    own = run.exists() and is_private(run)
    folder = run / "zorvik" if own else Path(f"/tmp/zorvik-{os.geteuid()}")
    folder.mkdir(exist_ok=True)
    if not is_private(folder):
        sys.exit(f"A pasta {folder} tem de ser sua e fechada aos outros.")
    return folder


def home_folder():
    if os.environ.get("ZORVIK_MCP_HOME"):
        return Path(os.environ["ZORVIK_MCP_HOME"])
    return Path(os.environ.get("LOCALAPPDATA") or user_folder()) / "ZORVIK" / "mcp"


def write_record(path, record):
    whole = path.with_suffix(".tmp")  # Readers come at any time and must not find a part.
    with whole.open("w") as file:
        file.write(json.dumps(record) + "\n")
        file.flush()
        os.fsync(file.fileno())
    whole.rename(path)


async def main():
    parser = argparse.ArgumentParser(description="Um editor minimo, para quem vai escrever um.")
    parser.add_argument("--id", default=f"minimo-{os.getpid()}", help="o nome deste editor")
    editor_id = parser.parse_args().id
    os.umask(0o077)  # Whatever this program makes is the user's alone.
    ended = asyncio.Event()
    for end in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        asyncio.get_running_loop().add_signal_handler(end, ended.set)
    token, pipe = secrets.token_hex(16), f"zorvik-{os.getpid()}-{secrets.token_hex(8)}"
    lock, path = (user_folder() / (pipe + end) for end in (".lock", ".sock"))
    record_path = home_folder() / "editors" / f"{os.getpid()}.json"
    record_path.parent.mkdir(parents=True, exist_ok=True)
    world = World()
    try:
        with lock.open("w") as held:
            fcntl.lockf(held, fcntl.LOCK_EX | fcntl.LOCK_NB)  # Who holds it serves the name.
            server = await asyncio.start_unix_server(
                lambda reader, writer: talk(reader, writer, world, token), path, limit=LINE_LIMIT)
            path.chmod(0o600)
            # Servers connect as soon as they see the record.
            write_record(record_path, {
                "editor_id": editor_id, "pid": os.getpid(), "pipe": pipe, "token": token,
                "bridge": BRIDGE, "engine_version": "1", "project": os.getcwd(),
                "project_name": "Minimo", "world": "minimo", "world_id": "minimo",
                "started": time.strftime("%Y-%m-%dT%H:%M:%S")})
            print(f"Editor {editor_id} aberto. Ctrl-C fecha.", flush=True)
            await ended.wait()
            server.close()
    finally:
        for file in (record_path, path, lock):
            file.unlink(missing_ok=True)


if __name__ == "__main__":
    asyncio.run(main())
