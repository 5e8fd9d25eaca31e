// SPDX-License-Identifier: MIT
// Prints links on which readers of links are known to disagree, one a line.  All bytes
// except printable ASCII are written as \xHH, and so is the backslash:
//
//     node generate.mjs COUNT SEED [TABLE]
//
// These are COUNT different ones of a grammar, always the same for a SEED, and then those of
// TABLE, which has the form of tests/links.txt.

import { existsSync, readFileSync } from 'node:fs';

const [count, seed, table] = process.argv.slice(2);
let state = Number(seed);

// A number below `limit`, from a generator that is the same everywhere (mulberry32).
function below(limit) {
  state = (state + 0x6d2b79f5) | 0;
  let t = Math.imul(state ^ (state >>> 15), 1 | state);
  t = (t + Math.imul(t ^ (t >>> 7), 61 | t)) ^ t;
  return ((t ^ (t >>> 14)) >>> 0) % limit;
}
const pick = (list) => list[below(list.length)];
const often = (usual, list) => (below(12) > 0 ? pick(usual) : pick(list));

const SCHEMES = ['vnc', 'ssh', 'rdp', 'telnet', 'VNC', 'Ssh', 'Rdp'];
const MARKS = ['://', ':/', ':///', ':////', ':', ':\\\\', ':/\\', '::/', ':// ', ':\t//', '//'];
const USERS = ['', 'kim', 'KIM', 'k%69m', 'a.b-c_d', '_svc', 'LAB%5Ckim', 'lab%5ckim',
  'kim%40corp.example', '%6bim'];
const ODD_USERS = ['kim;x=1', ';x=1', 'kim;fingerprint=ab-12,y=2', 'kim;', ';', 'kim;x=a%40b',
  'kim%3Bx', '%', '%00', 'ki m', '-kim', '+kim', 'kim%2540x', 'kim@', 'a@b', 'k%0Aim', 'k%C3%AFm',
  'k\u00efm', 'kim/', 'kim?', 'kim#', 'kim\\', 'a:b:c', '[kim]', 'kim%3a'];
const PASSWORDS = [null, null, null, '', 'pw', 'p%3Aw', 'p%40w', 'p:w', 'p%2Fw', 'p;w', '%C3%BC'];
const ODD_PASSWORDS = ['p@w', 'p%00w', 'p/w', 'p?w', 'p#w', 'p\\w', '[pw]', '%', 'p w', '%0d'];
const NAMES = ['host', 'host.example', 'HOST.Example', 'host.example.', 'h%6Fst.example', '%68ost',
  'host%2Eexample', 'host.example%2e', 'a_b.example', '_x', 'x-1.local', 'xn--bcher-kva.example',
  '3com.example', '1.2.3.4.example', '0x.example', 'x0', '10.example', 'ex%41mple', 'a.b.c.d.e',
  '0xg', 'xn--a', 'h--h', '%5Fx'];
const ODD_NAMES = ['', '.', '..', 'host..', '.host', 'a..b', '-h', 'h-', 'h-.example', 'a%2Fb',
  'a%40b', 'a%3Ab', 'a%5Cb', 'a%00b', 'a%23b', 'a%3Fb', 'a%25b', 'a%5Bb', 'a%20b', 'a b', 'a+b',
  'a,b', 'a;b', 'a&b', 'a=b', 'a!b', 'a*b', 'a~b', '(a)', "a'b", 'b\u00fccher.example',
  'b%C3%BCcher.example', '\uff48ost', 'host\u3002example', 'host%E3%80%82example', 'a\u00adb',
  'a%C2%ADb', '\u2460.example', 'fa\u00df.example', 'a\\b', 'a%EF%BC%8Fb', '%FF', 'a%0Ab', 'a%09b',
  '%2568ost', 'h%6', 'h%zz', 'a|b', 'a^b', 'a<b', 'a`b', 'a{b', 'a%7Fb', `${'a'.repeat(63)}.x`,
  `${'a'.repeat(64)}.x`];
const IPV4 = ['192.0.2.7', '127.0.0.1', '0.0.0.0', '255.255.255.255', '1%2E2.3.4', '1.2.3.%34'];
const ODD_IPV4 = ['127.1', '127.0.1', '2130706433', '0x7f.1', '0X7F000001', '0177.0.0.1',
  '127.0.0.01', '256.1.1.1', '1.2.3.4.', '1.2.3.4.5', '1.2.3', '1.2.3.0x4', '1.2.3.08', '0x', '0',
  '1.2.3.-4', '1.2.3.4%2E', '4294967296', '1..2', 'a.1', 'a.0x1', 'a.0x', '1.2.3.4%00',
  '\uff11.2.3.4', '1.2.3.999', '%31%32%37.1', 'host.0X1F'];
const IPV6 = ['[::1]', '[::]', '[2001:db8::1]', '[2001:DB8:0:0:0:0:0:1]', '[::ffff:192.0.2.7]',
  '[fe80::1%25eth0]', '[fe80::1%25ETH0]', '[1:2:3:4:5:6:7:8]', '[0001::]', '[1::8]', '[::1.2.3.4]',
  '[64:ff9b::1.2.3.4]', '[1:2:3:4:5:6:7::]', '[::2:3:4:5:6:7:8]', '[fe80::1%25a.b-c_d]',
  '[1:0:0:4:0:0:0:8]', '[ABCD:EF01::]'];
const ODD_IPV6 = ['[]', '[::1', '::1]', '::1', '[:::]', '[1:2:3]', '[::g]', '[::1%eth0]',
  '[fe80::1%25]', '[fe80::1%2525]', '[v1.x]', '[::1]x', 'x[::1]', '[::12345]', '[::1.2.3]',
  '[::1.2.3.04]', '[1.2.3.4]', '[host]', '[[::1]]', '[::1]]', '[%3A%3A1]', '%5B::1%5D',
  '[::1%25eth/0]', '[::1%25eth%300]', '[::1\\]', '[ ::1]', '[1:2:3:4:5:6:7:8:9]', '[::1@x]',
  '[::%31]', '[1:2:3:4:5:6:7:8::]', '[::1.2.3.256]', '[1:2:3:4:5:6:1.2.3.4]', '[::1:]'];
const PORTS = ['', '', '', ':5900', ':22', ':80', ':443', ':65535', ':1', ':'];
const ODD_PORTS = [':0', ':080', ':00', ':65536', ':99999999999', ':5900a', ':+1', ':-1', ': 22',
  ':22 ', ':%32', '::22', ':22:', ':22:33', ':2\t2', ':\uff12', ':0x16', ':22@x', ':22\\', ':,'];
const TAILS = ['', '', '', '/', '/', '?', '#', '/?', '/#', '?ViewOnly=1', '/?ViewOnly=1', '#top',
  '?x=@other.example', '/?x=@other.example:1', '#@other.example', '/#/@other.example', '?/',
  '?x=a%2Fb', '?x=http://other.example', '#//other.example:1', '?a=b&&c', '?x=%C3%BC', '?a?b', '#?/'];
const ODD_TAILS = ['//', '/x', '/@other.example', '/..', '/.', '\\', '\\@other.example', '/\\',
  ';x=1', '?x=[', '##', '?x=\\', '?x=%00', '#%00', '/%2F', '%2F', '%23', '%3F@x', ' ', '\t', '\n',
  '?x=1&x=2', '#a b', '?%zz', '/?=1', '//other.example', '?x=\u00fc', '/%2e%2e', '%2F@other.example'];
const TOKENS = ['@', ':', ';', '[', ']', '#', '?', '/', '\\', '%00', '%0a', '%2f', '%40', '%3A',
  '%3b', '%5B', '%5d', '%5C', '%23', '%3F', '%25', '%2e', '%20', '%09', '%', '.', '..', ',', '+',
  '&', '=', '!', '$', "'", '(', ')', '*', '~', '_', '-', '|', '<', '>', '"', '^', '`', '{', '}',
  '\t', '\n', '\r', ' ', '\0', '\x7f', '\x1b', '\u00fc', '\u3002', '\u200b', '\u00ad', '\uff20',
  '%c2%ad', '@other.example', ':22', ';x=1', '127.1', '0x7f.1', '//', '0', '\u2028', '\ufeff'];

function authority() {
  const host = often(pick([NAMES, IPV4, IPV6]), pick([ODD_NAMES, ODD_IPV4, ODD_IPV6]));
  const user = often(USERS, ODD_USERS);
  const password = often(PASSWORDS, ODD_PASSWORDS);
  const information = below(2) > 0 ? `${user}${password === null ? '' : `:${password}`}@` : '';
  return information + host + often(PORTS, ODD_PORTS);
}

const encoded = (character) =>
  [...Buffer.from(character)]
    .map((byte) => {
      const digits = byte.toString(16).padStart(2, '0');
      return `%${below(2) > 0 ? digits : digits.toUpperCase()}`;
    })
    .join('');

// The places where readers look for the end of a part, or any place.
function place(text) {
  const marks = [...text.matchAll(/[@:;/?#[\]%.]/g)].map((found) => found.index + below(2));
  return marks.length > 0 && below(3) > 0 ? pick(marks) : below(text.length + 1);
}

function mutated(text) {
  const at = place(text);
  const here = text[at] ?? '';
  const rest = text.slice(at + 1);
  switch (below(8)) {
    case 0:
      return text.slice(0, at) + rest;
    case 1:
    case 2:
      return here === '' ? text : text.slice(0, at) + encoded(here) + rest;
    case 3:
      return text.slice(0, at) + (below(2) > 0 ? here.toUpperCase() : here.toLowerCase()) + rest;
    case 4:
      return text.slice(0, at) + here + here + rest;
    default:
      return text.slice(0, at) + pick(TOKENS) + text.slice(at);
  }
}

function generated() {
  const mark = below(20) > 0 ? MARKS[0] : pick(MARKS);
  let text = pick(SCHEMES) + mark + authority() + often(TAILS, ODD_TAILS);
  for (let mutations = pick([0, 0, 0, 0, 1, 1, 1, 2, 3]); mutations > 0; mutations--) {
    text = mutated(text);
  }
  return text;
}

const escaped = (bytes) =>
  [...bytes]
    .map((byte) =>
      byte > 0x20 && byte < 0x7f && byte !== 0x5c
        ? String.fromCharCode(byte)
        : `\\x${byte.toString(16).padStart(2, '0')}`)
    .join('');

// The bytes of a link of the table, in which \{TEXT*N} is TEXT N times.
const ofTable = (line) =>
  Buffer.from(
    line
      .replace(/\\\{(.*?)\*(\d+)\}/g, (_, text, times) => text.repeat(Number(times)))
      .replace(/\\x([0-9a-fA-F]{2})/g, (_, digits) => String.fromCharCode(parseInt(digits, 16))),
    'latin1');

const links = new Set();
while (links.size < Number(count)) {
  links.add(escaped(Buffer.from(generated())));
}
const lines = table && existsSync(table) ? readFileSync(table, 'latin1').split('\n') : [];
const rows = lines.filter((line) => line !== '' && !/^[# ]/.test(line));
process.stdout.write([...links, ...rows.map((line) => escaped(ofTable(line)))].join('\n') + '\n');
