#!/usr/bin/env python3
"""Writes the seeds of the fuzz targets to fuzz/corpus. Needs makensis, openssl and osslsigncode.

Packages come from the package compiler; their stubs are cut down to a program head that holds the version resource, so
that an input stays a few kilobytes long.
"""
import json
import pathlib
import shutil
import struct
import subprocess
import tempfile
import zlib

ROOT = pathlib.Path(__file__).resolve().parent.parent
CORPUS = ROOT / "fuzz" / "corpus"
SECTOR = 512


def put(target, name, content):
    path = CORPUS / target / name
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(content.encode() if isinstance(content, str) else content)


def run(*command):
    subprocess.run([str(word) for word in command], check=True, capture_output=True)


def program(section=b"", directories=None, is64=True, address=0x1000):
    """A PE file with one section behind a head of one sector."""
    data = section + bytes(-len(section) % SECTOR)
    fixed = 112 if is64 else 96
    optional = bytearray(fixed + 16 * 8)
    struct.pack_into("<H", optional, 0, 0x20B if is64 else 0x10B)
    struct.pack_into("<I", optional, fixed - 4, 16)
    for index, (where, size) in (directories or {}).items():
        struct.pack_into("<II", optional, fixed + 8 * index, where, size)
    struct.pack_into("<II", optional, 32, 0x1000, SECTOR)  # alignments
    struct.pack_into("<II", optional, 56, 0x2000, SECTOR)  # sizes of image and head
    head = b"MZ" + bytes(58) + struct.pack("<I", 64) + b"PE\0\0"
    head += struct.pack("<HHIIIHH", 0x8664 if is64 else 0x14C, 1, 0, 0, 0, len(optional), 0x22)
    head += bytes(optional)
    head += struct.pack("<8sIIIIIIHHI", b".data", len(section), address, len(data), SECTOR, 0, 0, 0, 0, 0x40000040)
    return head.ljust(SECTOR, b"\0") + data


def resources(version):
    """A resource section with only a version."""
    row = lambda number, offset: bytes(12) + struct.pack("<HHII", 0, 1, number, offset)
    table = row(16, 0x80000018) + row(1, 0x80000030) + row(1033, 72)
    return table + struct.pack("<IIII", 0x1000 + 88, len(version), 0, 0) + version


def small_package(package):
    """The package behind a stub of only its version resource, with a fresh checksum where it had one."""
    start = package.index(b"\xef\xbe\xad\xdeNullsoftInst") - 4
    flags, = struct.unpack_from("<I", package, start)
    length, = struct.unpack_from("<I", package, start + 24)
    mark = "VS_VERSION_INFO".encode("utf-16-le")
    section = b""
    if mark in package[:start]:
        at = package.index(mark) - 6
        section = resources(package[at:at + struct.unpack_from("<H", package, at)[0]])
    small = program(section, {2: (0x1000, len(section))} if section else None, is64=False)
    small += package[start:start + length]
    if not flags & 4 or flags & 8:
        small = small[:-4]
        small += struct.pack("<I", zlib.crc32(small[SECTOR:]))
    return small


def packages(work):
    # Most without a checksum, which a change of any byte would break before the items are reached.
    variants = {
        "lzma-solid": ["-c", "lzma"],
        "lzma-solid-checked": ["-c", "lzma", "-l", "msi", "--checksum", "on"],
        "lzma-items": ["-c", "lzma", "--separate", "-b", "32"],
        "zlib-solid": ["-c", "zlib", "-l", "msi"],
        "zlib-items": ["-c", "zlib", "--separate", "-l", "msi"],
        "bzip2-solid": ["-c", "bzip2", "-l", "msi", "--no-version"],
        "bzip2-items-ansi": ["-c", "bzip2", "--separate", "--ansi", "-l", "msi"],
    }
    for name, options in variants.items():
        out = work / "package.exe"
        run(ROOT / "scripts/make-package.sh", "-s", "0", "--checksum", "off", *options, out)
        put("package_reader", name, small_package(out.read_bytes()))


def import_section(names, address=0x1000):
    table, texts = b"", b""
    behind = address + 20 * (len(names) + 1)
    for name in names:
        table += struct.pack("<IIIII", behind, 0, 0, behind + len(texts), behind)
        texts += name.encode() + b"\0"
    return table + bytes(20) + texts


def programs(work):
    for bits in (32, 64):
        section = import_section(["kernel32.dll", "Core.dll", "media.dll"])
        put("pe_imports", f"pe{bits}", program(section, {1: (0x1000, len(section))}, is64=bits == 64))
    put("pe_imports", "none", program(b"data"))
    put("pe_imports", "cut", program(import_section(["a.dll"]), {1: (0x1000, 40)})[:300])

    key, certificate = work / "key.pem", work / "certificate.pem"
    run("openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-keyout", key,
        "-out", certificate, "-days", "9000", "-subj", "/CN=Orv Fuzz/O=Orv", "-addext", "extendedKeyUsage=codeSigning")
    plain = work / "plain.exe"
    for name, bits, digest in (("signed64", 64, "sha256"), ("signed32-sha1", 32, "sha1")):
        plain.write_bytes(program(b"content", is64=bits == 64))
        out = work / f"{name}.exe"
        run("osslsigncode", "sign", "-certs", certificate, "-key", key, "-h", digest, "-in", plain, "-out", out)
        put("pe_security", name, out.read_bytes())
        if bits == 64:
            put("pe_security", "message", out.read_bytes()[2 * SECTOR + 8:])
    put("pe_security", "unsigned", program(b"content"))


def varint(number):
    out = b""
    while number > 127:
        out += bytes([number & 127 | 128])
        number >>= 7
    return out + bytes([number])


def field(number, value):
    if isinstance(value, int):
        return varint(number << 3) + varint(value & (1 << 64) - 1)
    value = value.encode() if isinstance(value, str) else value
    return varint(number << 3 | 2) + varint(len(value)) + value


def record(type_id, fields=b""):
    return varint(15 << 3 | 1) + struct.pack("<Q", type_id) + fields


def records():
    chunk = record(0xD331FC77FD18ABF8, field(1, "{guid}") + field(2, 4096) + field(3, b"MZ\0\1") + field(4, 1024) +
                   field(5, '{"softversion":"1.0"}'))
    # Nested records, in every depth and with every member's number.
    modify = b"".join(field(n, -n) for n in range(1, 4))
    source = b"".join(field(n, f"text{n}") for n in range(1, 4))
    user = b""
    numbers = {4: 4, 7: 7, 8: bytes(range(9)), 9: modify, 10: -1, 11: 2, 12: source, 13: 13, 14: 14}
    for n in (*range(1, 15), 16, 16, 17):
        user += field(n, numbers.get(n, f"m{n}"))
    login = field(1, user) + field(2, "x") + field(3, 3) + field(4, "y") + field(5, 5)
    put("record_decoder", "document", record(0x710061AED6F261C7, field(1, "[]")))
    put("record_decoder", "notify", record(0x81D547A257E20437, field(1, "1.11.0.8")))
    put("record_decoder", "chunk", chunk)
    put("record_decoder", "modify", record(0x6F7F55BFDC8F6646, modify))
    put("record_decoder", "source", record(0x387A41617A6DBC88, source))
    put("record_decoder", "user", record(0x34806B49AF91B59B, user))
    put("record_decoder", "login", record(0x466D9A1C5290E036, login))
    authen = record(0x8C3BF01FADC5E937, field(1, login))
    put("record_decoder", "authen", authen)
    server = b"".join(field(n, text) for n, text in enumerate(("s1", "system", "1.11.0.8", "10.0.0.1 80"), 1))
    server += field(5, 1) + field(6, 1)
    frame = field(2, 77)
    for n, text in enumerate(("sender", "addressee", "target", "waiter", "/topic", "session"), 3):
        frame += field(n, text)
    frame += field(9, -203) + field(10, "lost") + field(11, chunk) + field(12, authen) + field(13, 1 << 40) + field(14, 2)
    put("record_decoder", "server", record(0x34143257D999EFF5, server))
    frames = {"request": 1, "answer": 2, "announce": 3, "hello": 4, "list": 5}
    for name, kind in frames.items():
        rest = field(16, 1) + field(17, 1) + field(18, server) + field(19, "s1") if kind > 2 else b""
        put("record_decoder", name, record(0x6B1F93C2D05E8A47, field(1, kind) + frame + rest))


def responses():
    """A byte that chooses the request (fuzz/http_response.cpp), then what the server sends, in pieces."""
    gather, stream, head, post, silent, reset, end = 0, 1, 2, 4, 8, 16, 33
    plain = "HTTP/1.1 200 OK\r\nContent-Length: 4\r\nX-A: b\r\n\r\nbody"
    chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nbody\r\n\x1e2;x=y\r\nab\r\n0\r\nT: u\r\n\r\n"
    redirect = "HTTP/1.1 302 Found\r\nLocation: /b\r\nContent-Length: 2\r\n\r\nno\x1e"
    answers = {
        "plain": (gather, plain),
        "plain-streamed": (stream, plain.replace("\r\n\r\n", "\r\n\x1e\r\n\x1e")),
        "plain-cut": (gather, "\x1e".join(plain)),
        "short": (stream, plain[:-1]),
        "long": (gather, plain + "more"),
        "chunked": (gather, chunked),
        "chunked-streamed": (stream, chunked),
        "chunk-too-long": (gather, chunked.replace("4\r\n", "ffffffffffffffff\r\n")),
        "until-close": (gather, "HTTP/1.0 200 OK\r\n\r\nall of it"),
        "redirect": (gather, redirect + plain),
        "redirect-closed": (stream, redirect.replace("\r\n\r\n", "\r\nConnection: close\r\n\r\n") + plain),
        "redirects": (gather, redirect * 7),
        "redirect-away": (gather, redirect.replace("/b", "http://elsewhere.example:81/b") + plain),
        "head": (head, plain[:-4]),
        "posted": (post, redirect + plain),
        "not-found": (gather, plain.replace("200 OK", "404 Not Found")),
        "no-content": (stream, "HTTP/1.1 204 No Content\r\n\r\n"),
        "partial": (stream, plain.replace("200 OK", "206 Partial Content\r\nContent-Range: bytes 0-3/9")),
        "continued": (gather, "HTTP/1.1 100 Continue\r\n\r\n\x1e" + plain),
        "two-lengths": (gather, plain.replace("\r\n\r\n", "\r\nContent-Length: 5\r\n\r\n")),
        "negative-length": (gather, plain.replace(": 4", ": -4")),
        "huge-length": (stream, plain.replace(": 4", ": 18446744073709551616")),
        "no-status": (gather, plain.replace("HTTP/1.1 200", "HTTP/200")),
        "odd-status": (stream, plain.replace("HTTP/1.1 200", "HTTP/2222222222 30")),
        "header-cut": (gather, plain[:30]),
        "no-http": (gather, "220 ready\r\n"),
        "silent": (silent, plain[:-2]),
        "reset": (stream | reset, plain[:-2]),
        "ended": (end, "HTTP/1.0 200 OK\r\n\r\none\x1etwo\x1ethree"),
        "zipped-transfer": (gather, "HTTP/1.1 200 OK\r\nTransfer-Encoding: gzip, chunked\r\n\r\n2\r\nab\r\n0\r\n\r\n"),
    }
    for name, (choice, text) in answers.items():
        put("http_response", name, bytes([choice]) + text.encode())


def documents():
    cloud = {"softversion": "1.11.0.8", "description": "new", "url": "http://update.orv.example/1.11.0.8.exe"}
    put("cloud_documents", "one", json.dumps(cloud))
    put("cloud_documents", "list", json.dumps([cloud, {**cloud, "softversion": "1.12-oem3", "url": ""}, {}]))
    put("cloud_documents", "nothing", json.dumps({**cloud, "url": ""}))
    node = {"softversion": "1.11.0.8-b7-rA", "serverid": "s1", "description": "d", "systemType": 1, "systemBits": 64,
            "versionType": 2, "versionSource": 1}
    put("node_documents", "one", json.dumps(node))
    put("node_documents", "list", json.dumps([node, {**node, "systemBits": "32", "softversion": 2.5}, {"softversion": 1}]))
    put("node_documents", "null", "null")
    note = {"softversion": "1.11", "updateTime": "2024-05-06 07:08:09", "versionInfo": "better"}
    put("release_histories", "cloud", json.dumps({"data": {"orvVersionInfo": [note, {**note, "softversion": "1.12"}]}}))
    told = {"softversion": "1.11", "systemType": 1, "systemBits": 64, "versionType": 1, "versionInfo": "better",
            "updateTime": "1714950489", "displayIndex": 0}
    put("release_histories", "node", json.dumps(told))
    put("release_histories", "nodes", json.dumps([told, {**told, "softversion": "1.12", "displayIndex": "1"}]))
    compatibility()
    put("json_text", "scalars", '[null,true,false,0,-1,1.5e300,18446744073709551615,"\\u00e9\\ud83d\\ude00\\n"]')
    put("json_text", "tree", '{"a":{"b":[1,[2,[3]]],"b":"again"},"":{}, "c":[]}')
    put("json_text", "deep", "[" * 64 + "]" * 64)
    put("json_text", "deeper", "[" * 65 + "]" * 65)
    put("json_text", "repeated", '{"b":1,"a":2,"\\u0061":3,"12345678x":4,"12345678":5,"12345678x":6,"b":[7]}')
    put("json_text", "escapes", '{"\\"":"\\\\","\\u0000":"\\/\\b\\f\\n\\r\\t","\\u00e9\\u20ac":"\\ud834\\udd1e"}')
    put("json_text", "blanks", '\ufeff { "a" : [ 1 , 2.0 , -0 , -0.0 , 1e-999 ] , "b" : { } } ')
    put("json_text", "blank", " \t\r\n7 ")


def compatibility():
    """Two components, each a system's digit and a version, then the document."""
    def rules(second, low="1.2.0.0", high="1.3.0.0", systems=("Windows", "Linux"), first="SystemVersion"):
        span = {"LowVersion": low, "HigherVersion": high}
        return {"System": list(systems), first: span, second + "System": list(systems), second + "Version": span}

    def document(**arrays):
        return json.dumps({"Version": "1.0.0.6", **arrays})

    everything = document(ClientCompatibles=[rules("Client"), rules("Client", "1.2", "2.0")],
                          SystemCompatibles=[rules("other", first="Version")],
                          VideoWallCompatibles=[rules("VideoWall", "1.3", "1.4", ("MAC", "ios", "BeOS"))],
                          VanticServerCompatibles=[rules("VanticServer", "1.2-b4", "1.3-oem2")])
    put("compatibility_document", "everything", "11.2.5.0\n21.2.0.0-b3-rA\n" + everything)
    put("compatibility_document", "equal", "11.9-b1\n31.9-rB\n" + document(ClientCompatibles=[]))
    put("compatibility_document", "same-numbers", "11.2-b7\n11.2\n" + document(
        ClientCompatibles=[rules("Client", "1.2-b7", "1.3"), rules("Client", "1.2.0.0", "1.3-oem1")]))
    put("compatibility_document", "nested", "11.35\n11.2\n" + document(ClientCompatibles=[
        rules("Client", "1.0", "1.1"), rules("Client", "1.2", "9"), rules("Client", "1.3", "1.4")]))
    put("compatibility_document", "other-kinds", "11.2\n11.2\n" + document(
        ClientCompatibles={"0": rules("Client")}, SystemCompatibles="x", VideoWallCompatibles=[5, None, {}, []]))
    put("compatibility_document", "incomplete", "01.2\n01.2\n" + document(ClientCompatibles=[
        {"System": "Windows", "SystemVersion": {"LowVersion": "1"}}, rules("Client", 1, 2, (1, None, "Windows"))]))
    put("compatibility_document", "no-version", "11.2\n11.2\n{}")


def texts():
    put("version_text", "plain", "1.11.0.8\n1.11.0.8-oem3-b7-rRC_1")
    put("version_text", "short", "2\n2.0.0.0")
    put("version_text", "edges", "2147483647.0-b2147483647\n2147483648")
    put("item_name", "plain", "Orv Client\\lang/zh-CN.dll")
    put("item_name", "variable", "$PLUGINSDIR\\x.dll")
    put("item_name", "climbs", "a\\.. .\\..\\evil.exe")
    put("item_name", "points", "..data\\.\\a..b\\c")
    put("item_name", "device", "a\\Com1.dll")
    put("item_name", "drive", "C:evil.exe")
    put("http_address", "plain", "http://update.orv.example/1.11.0.8.exe")
    put("http_address", "whole", "https://user:word@[::1]:8443/a b/../c?d=e&f#g")
    put("http_address", "fragment", "http://update.orv.example/a#b c")
    put("http_address", "blank-user", "https://a b:c@host/")
    put("http_address", "lines", "http://update.orv.example/a\r\nHost: other")
    put("http_address", "other", "file:///etc/passwd")
    put("http_address", "no-host", "http:///a")
    put("version_path", "all", "Windows x64 All")
    put("version_path", "client", "Linux x86 Client")
    put("version_path", "unknown", "Unknown x64 Server")


def topics():
    """Steps of peers: topic and form in the first byte, then the body. fuzz/TopicSite.h tells the rest."""
    step = lambda topic, form, body: bytes([topic | form << 4]) + (body.encode() if isinstance(body, str) else body)
    join = lambda *steps: b"\x1e".join(steps)
    raw, packet, notify, chunk, elsewhere = 0, 1, 2, 3, 4
    packet_id, notify_id, chunk_id = 0x710061AED6F261C7, 0x81D547A257E20437, 0xD331FC77FD18ABF8
    version = lambda number, role=1: json.dumps({"softversion": number, "serverid": "peer", "description": "d",
        "systemType": 1, "systemBits": 64, "versionType": role, "versionSource": 1})
    part = lambda *fields: "\x1f".join(str(field) for field in fields)
    put("topic_catalogue", "each", join(*(step(n, notify, "1.0-oem2") for n in range(5))))
    put("topic_catalogue", "other-record", join(*(step(n, packet, "1.0") for n in range(5))))
    put("topic_catalogue", "elsewhere", join(*(step(n, elsewhere, b"") for n in range(5))))
    put("topic_catalogue", "record", step(0, raw, record(notify_id, field(1, "4.4"))))
    put("topic_catalogue", "no-version", join(step(0, notify, "../../x"), step(1, notify, "1.0\r\nx"), step(2, raw, b"")))
    for name, number, role in (("local", "1.0", 1), ("role", "2.0", 3), ("node", "3.0", 1), ("cloud", "4.0", 1),
                               ("unknown", "9.0", 1), ("path", "../../x", 1), ("range", "1.0", -7)):
        put("topic_install", name, join(*(step(n, packet, version(number, role)) for n in (2, 3, 0, 1))))
    put("topic_install", "record", step(3, raw, record(packet_id, field(1, version("1.0")))))
    put("topic_install", "elsewhere", step(0, packet | elsewhere, version("1.0")))
    put("topic_install", "no-document", join(*(step(n, packet, "{}") for n in range(4))))
    pull = lambda position: step(0, chunk, part("t", 0, position, version("1.0"), ""))
    push = lambda size, position, number, data: step(1, chunk, part("t", size, position, version(number), data))
    put("topic_transfer", "pull", join(pull(0), pull(4), pull(4096)))
    put("topic_transfer", "push", join(push(8, 0, "5.0", "MZ12"), push(8, 4, "5.0", "3456")))
    put("topic_transfer", "replace", join(pull(0), push(4, 0, "1.0", "MZ12"), pull(0)))
    put("topic_transfer", "far", push(2 ** 32 - 1, 2 ** 32 - 2, "5.0", "x"))
    put("topic_transfer", "path", push(4, 0, "../../../x", "MZ12"))
    put("topic_transfer", "two", join(push(8, 0, "5.0", "MZ"), push(8, 0, "6.0", "MZ12"), push(8, 2, "5.0", "345678")))
    chunk_fields = field(1, "t") + field(2, 4) + field(3, b"MZ12") + field(5, version("5.0"))
    put("topic_transfer", "record", step(1, raw, record(chunk_id, chunk_fields)))


def main():
    shutil.rmtree(CORPUS, ignore_errors=True)
    with tempfile.TemporaryDirectory() as directory:
        packages(pathlib.Path(directory))
        programs(pathlib.Path(directory))
    records()
    responses()
    documents()
    texts()
    topics()


main()
