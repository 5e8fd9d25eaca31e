# SPDX-License-Identifier: MIT
"""DES, which VNC's passwords need and Python's library does not have.  Slow, only for tests."""

# From FIPS 46-3; positions count from 1 at the highest bit.
INITIAL = [58 - 8 * (i % 8) + 2 * (i // 8) if i < 32 else 57 - 8 * (i % 8) + 2 * (i // 8 - 4)
           for i in range(64)]
FINAL = [INITIAL.index(i + 1) + 1 for i in range(64)]
EXPANSION = [(4 * (i // 6) + i % 6 - 1) % 32 + 1 for i in range(48)]
PERMUTATION = [16, 7, 20, 21, 29, 12, 28, 17, 1, 15, 23, 26, 5, 18, 31, 10,
               2, 8, 24, 14, 32, 27, 3, 9, 19, 13, 30, 6, 22, 11, 4, 25]
KEY_CHOICE_1 = [57, 49, 41, 33, 25, 17, 9, 1, 58, 50, 42, 34, 26, 18, 10, 2, 59, 51, 43, 35,
                27, 19, 11, 3, 60, 52, 44, 36, 63, 55, 47, 39, 31, 23, 15, 7, 62, 54, 46, 38,
                30, 22, 14, 6, 61, 53, 45, 37, 29, 21, 13, 5, 28, 20, 12, 4]
KEY_CHOICE_2 = [14, 17, 11, 24, 1, 5, 3, 28, 15, 6, 21, 10, 23, 19, 12, 4, 26, 8, 16, 7, 27,
                20, 13, 2, 41, 52, 31, 37, 47, 55, 30, 40, 51, 45, 33, 48, 44, 49, 39, 56, 34,
                53, 46, 42, 50, 36, 29, 32]
ROTATIONS = [1, 1, 2, 2, 2, 2, 2, 2, 1, 2, 2, 2, 2, 2, 2, 1]
# Each box as 64 hexadecimal digits, row after row.
BOXES = [
    "e4d12fb83a6c59070f74e2d1a6cb953841e8d62bfc973a50fc8249175b3ea06d",
    "f18e6b34972dc05a3d47f28ec01a69b50e7ba4d158c6932fd8a13f42b67c05e9",
    "a09e63f51dc7b428d709346a285ecbf1d6498f30b12c5ae71ad069874fe3b52c",
    "7de3069a1285bc4fd8b56f03472c1ae9a690cb7df13e52843f06a1d8945bc72e",
    "2c417ab6853fd0e9eb2c47d150fa3986421bad78f9c5630eb8c71e2d6f09a453",
    "c1af92680d34e75baf427c9561de0b389ef528c3704a1db6432c95fabe17608d",
    "4b2ef08d3c975a61d0b7491ae35c2f8614bdc37eaf6805926bd814a7950fe23c",
    "d2846fb1a93e50c71fd8a374c56b0e927b419ce206adf35821e74a8dfc90356b",
]


def chosen(value, width, positions):
    result = 0
    for position in positions:
        result = result << 1 | value >> (width - position) & 1
    return result


def round_keys(key):
    both = chosen(int.from_bytes(key, "big"), 64, KEY_CHOICE_1)
    left, right = both >> 28, both & 0xFFFFFFF
    keys = []
    for count in ROTATIONS:
        left = (left << count | left >> 28 - count) & 0xFFFFFFF
        right = (right << count | right >> 28 - count) & 0xFFFFFFF
        keys.append(chosen(left << 28 | right, 56, KEY_CHOICE_2))
    return keys


def mixed(half, key):
    value = chosen(half, 32, EXPANSION) ^ key
    result = 0
    for i, box in enumerate(BOXES):
        six = value >> (42 - 6 * i) & 63
        row, column = six >> 4 & 2 | six & 1, six >> 1 & 15
        result = result << 4 | int(box[16 * row + column], 16)
    return chosen(result, 32, PERMUTATION)


def des(block, key, decrypt=False):
    """One block of 8 bytes."""
    value = chosen(int.from_bytes(block, "big"), 64, INITIAL)
    left, right = value >> 32, value & 0xFFFFFFFF
    keys = round_keys(key)
    for each in reversed(keys) if decrypt else keys:
        left, right = right, left ^ mixed(right, each)
    return chosen(right << 32 | left, 64, FINAL).to_bytes(8, "big")


def vnc_key(key):
    """VNC reads the bits of each byte of a key from the other end."""
    return bytes(int(f"{byte:08b}"[::-1], 2) for byte in key)


def vnc_response(challenge, password):
    key = vnc_key(password.encode()[:8].ljust(8, b"\0"))
    return des(challenge[:8], key) + des(challenge[8:16], key)


def cbc_decrypted(data, key, before):
    plain = b""
    for start in range(0, len(data), 8):
        block = data[start:start + 8]
        plain += bytes(a ^ b for a, b in zip(des(block, key, decrypt=True), before))
        before = block
    return plain
