# SPDX-License-Identifier: MIT
"""How the hostile VNC server lets clients in: it accepts and records every answer."""

import hashlib
import os
import select
import shutil
import socket
import ssl
import struct
import subprocess
import threading

from hostile_vnc_des import cbc_decrypted, vnc_key, vnc_response
from hostile_vnc_wire import Gone

NONE, VNC, TIGHT, VENCRYPT, APPLE, MS_LOGON = 1, 2, 16, 19, 30, 113

# Name: security type, and the type inside for Tight and VeNCrypt.
TYPES = {
    "none": (NONE, None),
    "vnc": (VNC, None),
    "plain": (VENCRYPT, 256),
    "tls-none": (VENCRYPT, 257),
    "tls-vnc": (VENCRYPT, 258),
    "tls-plain": (VENCRYPT, 259),
    "x509-none": (VENCRYPT, 260),
    "x509-vnc": (VENCRYPT, 261),
    "x509-plain": (VENCRYPT, 262),
    "tight-none": (TIGHT, 1),
    "tight-vnc": (TIGHT, 2),
    "tight-unix": (TIGHT, 129),
    "apple": (APPLE, None),
    "ms-logon": (MS_LOGON, None),
}

TIGHT_NAMES = {1: b"STDVNOAUTH__", 2: b"STDVVNCAUTH_", 129: b"TGHTULGNAUTH"}

# The second group of RFC 2409, for the key exchange of APPLE.
PRIME = int(
    "FFFFFFFFFFFFFFFFC90FDAA22168C234C4C6628B80DC1CD129024E088A67CC74020BBEA63B139B22514A0879"
    "8E3404DDEF9519B3CD3A431B302B0A6DF25F14374FE1356D6D51C245E485B576625E7EC6F44C42E9A637ED6B"
    "0BFF5CB6F406B7EDEE386BFB5A899FA5AE9F24117C4B1FE649286651ECE65381FFFFFFFFFFFFFFFF", 16)


def admit(client):
    """From the version to the result.  Leaves ClientInit to be read."""
    wire = client.wire
    version = client.options.version
    wire.send(f"RFB 003.{int(version[2]):03}\n".encode())
    answer = wire.read(12)
    client.note("version", version=answer.decode("latin-1").strip())
    version = min(int(version[2]), int(answer[8:11]))
    offered = [TYPES[name] for name in client.options.security]
    if version < 7:
        kind = next(kind for kind, _ in offered if kind in (NONE, VNC))
        wire.send(struct.pack(">I", kind))
    else:
        kinds = list(dict.fromkeys(kind for kind, _ in offered))
        wire.send(bytes([len(kinds), *kinds]))
        kind = wire.read_number("B")
        if kind not in kinds:
            raise Gone(f"security type {kind} was not offered")
    inside = [each for outside, each in offered if outside == kind]
    client.note("security", type=kind)
    answered = STEPS[kind](client, inside)
    if answered or version >= 8:
        wire.send(bytes(4))


# Each step returns whether a result is due in the versions before 3.8, too.


def none(_client, _inside):
    return False


def vnc(client, _inside):
    challenge = os.urandom(16)
    client.wire.send(challenge)
    response = client.wire.read(16)
    words = [word for word in client.options.passwords
             if vnc_response(challenge, word) == response]
    client.note("vnc_auth", response=response.hex(), password=words[0] if words else None)
    return True


def login(client, user, password):
    client.note("login", user=user.decode("utf-8", "replace"),
                password=password.decode("utf-8", "replace"))
    return True


def plain(client, most=1 << 16):
    user, password = client.wire.read_number("I"), client.wire.read_number("I")
    if max(user, password) > most:
        raise Gone("too long a login")
    return login(client, client.wire.read(user), client.wire.read(password))


def tight(client, inside):
    wire = client.wire
    wire.send(struct.pack(">I", 0))  # no tunnels
    wire.send(struct.pack(">I", len(inside)),
              *(struct.pack(">I", kind) + TIGHT_NAMES[kind] for kind in inside))
    wire.tight_capabilities = True
    kind = wire.read_number("I")
    client.note("security", type=TIGHT, inside=kind)
    if kind == 129:
        return plain(client)
    return {1: none, 2: vnc}[kind](client, inside)


def vencrypt(client, inside):
    wire = client.wire
    wire.send(b"\0\2")
    if wire.read(2) != b"\0\2":
        raise Gone("another version of VeNCrypt")
    wire.send(bytes([0, len(inside)]), *(struct.pack(">I", kind) for kind in inside))
    kind = wire.read_number("I")
    client.note("security", type=VENCRYPT, inside=kind)
    if kind not in inside:
        raise Gone(f"VeNCrypt {kind} was not offered")
    if kind != 256:
        wire.send(b"\1")
        start_tls(client, anonymous=kind < 260)
    if kind in (257, 260):
        return False
    return vnc(client, inside) if kind in (258, 261) else plain(client)


def start_tls(client, anonymous):
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    if anonymous:
        context.maximum_version = ssl.TLSVersion.TLSv1_2  # later ones want a certificate
        context.set_ciphers("aNULL:@SECLEVEL=0")
    else:
        context.load_cert_chain(client.options.certificate)
    try:
        secure = context.wrap_socket(client.wire.connection, server_side=True)
    except (ssl.SSLError, OSError) as error:
        raise Gone(f"no TLS: {error}") from error
    client.note("tls", cipher=secure.cipher()[0])
    inner, client.wire.connection = socket.socketpair()
    threading.Thread(target=relay, args=[secure, inner], daemon=True).start()


def relay(secure, inner):
    """Carries bytes both ways in one thread, because two threads cannot share a TLS socket."""
    other = {secure: inner, inner: secure}
    try:
        while True:
            ready = [secure] if secure.pending() else select.select([secure, inner], [], [])[0]
            for source in ready:
                data = source.recv(1 << 14)
                if not data:
                    return
                other[source].sendall(data)
    except OSError:
        pass
    finally:
        for each in (secure, inner):
            each.close()


def apple(client, _inside):
    """Type 30: a key exchange, then user and password in AES, 64 bytes each."""
    wire = client.wire
    length = (PRIME.bit_length() + 7) // 8
    secret = int.from_bytes(os.urandom(32), "big")
    wire.send(struct.pack(">HH", 2, length), PRIME.to_bytes(length, "big"),
              pow(2, secret, PRIME).to_bytes(length, "big"))
    sealed = wire.read(128)
    shared = pow(int.from_bytes(wire.read(length), "big"), secret, PRIME)
    key = hashlib.md5(shared.to_bytes(length, "big")).hexdigest()
    clear = b""
    if shutil.which("openssl"):
        clear = subprocess.run(["openssl", "enc", "-d", "-aes-128-ecb", "-nopad", "-K", key],
                               input=sealed, capture_output=True, check=True).stdout
    return login(client, clear[:64].partition(b"\0")[0], clear[64:].partition(b"\0")[0])


def ms_logon(client, _inside):
    """Type 113: a key exchange of 64 bits, then user and password in DES."""
    wire = client.wire
    modulus, secret = 0xFFFFFFFFFFFFFFC5, int.from_bytes(os.urandom(6), "big")
    wire.send(struct.pack(">QQQ", 5, modulus, pow(5, secret, modulus)))
    shared = pow(wire.read_number("Q"), secret, modulus).to_bytes(8, "big")
    key = vnc_key(shared)
    user = cbc_decrypted(wire.read(256), key, shared)
    password = cbc_decrypted(wire.read(64), key, shared)
    return login(client, user.partition(b"\0")[0], password.partition(b"\0")[0])


STEPS = {NONE: none, VNC: vnc, TIGHT: tight, VENCRYPT: vencrypt, APPLE: apple,
         MS_LOGON: ms_logon}
