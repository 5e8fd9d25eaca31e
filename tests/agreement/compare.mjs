// SPDX-License-Identifier: MIT
// Compares what hopopen, libcurl and GLib read in links with what browsers do:
//
//     node compare.mjs LINKS READINGS GENERATED
//
// LINKS is the output of generate.mjs, READINGS that of readers.cpp for it, and GENERATED
// how many of the links come from the grammar.  A third of these must be accepted, so that
// the comparison means something.

import { readFileSync } from 'node:fs';

const [linksFile, readingsFile, generated] = process.argv.slice(2);
const linesOf = (file) => readFileSync(file, 'latin1').split('\n').slice(0, -1);
const links = linesOf(linksFile);
const readings = linesOf(readingsFile);

const bytesOf = (field) => (field === '-' ? '' : Buffer.from(field, 'hex').toString('latin1'));
const decoded = (text) =>
  text.replace(/%([0-9a-fA-F]{2})/g, (_, digits) => String.fromCharCode(parseInt(digits, 16)));
const plain = (host) => host.toLowerCase().replace(/\.$/, '');

// The value of an address as browsers write it, which is without dots, as readers.cpp has it.
function valueOf(address) {
  const [front, back] = address.split('::').map((part) => part.split(':').filter(Boolean));
  const middle = back === undefined ? [] : Array(8 - front.length - back.length).fill('0');
  return [...front, ...middle, ...(back ?? [])].map((group) => group.padStart(4, '0')).join('');
}

function hostByBrowser(host) {
  return host.startsWith('[') ? `ipv6 ${valueOf(host.slice(1, -1))}` : plain(decoded(host));
}

function byBrowser(link) {
  try {
    const url = new URL(link);
    return {
      user: decoded(url.username),
      host: hostByBrowser(url.hostname),
      port: url.port || '-',
    };
  } catch {
    return null;
  }
}

// The reading in four fields.  libcurl and GLib decode hosts, but not users.
function readingOf([user, host, port, zone], usersAreDecoded) {
  return user === '!'
    ? null
    : {
        user: usersAreDecoded ? bytesOf(user) : decoded(bytesOf(user)),
        host: plain(bytesOf(host)),
        port,
        zone: bytesOf(zone),
      };
}

const withoutParameters = (user, link) => (/^ssh:/i.test(link) ? user.split(';')[0] : user);

// The parts that another reader reads differently, in words.
function difference(name, ours, theirs, link) {
  if (theirs === null) {
    return `${name} takes it for no link`;
  }
  const user = withoutParameters(theirs.user, link);
  const parts = [['user', ours.user, user], ['host', ours.host, theirs.host],
    ['port', ours.port, theirs.port]];
  if (theirs.zone !== undefined) {
    parts.push(['zone', ours.zone, theirs.zone]);
  }
  const wrong = parts.find(([, mine, other]) => mine !== other);
  return wrong && `${name} reads the ${wrong[0]} "${wrong[2]}", hopopen "${wrong[1]}"`;
}

// GLib refuses percent-encoded IPv4 addresses, so it never shows a different one.
const isEncodedIPv4 = (link, ours) =>
  /^(\d+\.){3}\d+$/.test(ours.host) &&
  link.split('://')[1].split(/[/?#]/)[0].split('@').at(-1).includes('%');

function differenceOf(link, reading) {
  const fields = reading.trim().split(' ');
  const ours = readingOf(fields.slice(0, 4), true);
  // Browsers do not know zones, so only the address is compared.
  const forBrowsers = ours.zone === '' ? link : link.replace(/%25[^\]]*\]/, ']');
  const glib = readingOf(fields.slice(8, 12), false);
  return (
    difference('libcurl', ours, readingOf(fields.slice(4, 8), false), link) ||
    (!(glib === null && isEncodedIPv4(link, ours)) && difference('GLib', ours, glib, link)) ||
    difference('the URL standard of browsers', ours, byBrowser(forBrowsers), link)
  );
}

if (readings.length !== links.length) {
  console.log(`${links.length} links, but ${readings.length} readings`);
  process.exit(1);
}
let failed = 0;
let passed = 0;
let accepted = 0;
links.forEach((line, i) => {
  if (readings[i] === 'refused') {
    return;
  }
  accepted += i < Number(generated) ? 1 : 0;
  const wrong = differenceOf(line, readings[i]);
  if (wrong) {
    failed++;
    if (failed <= 20) {
      console.log(`${line}\n  ${wrong}`);
    }
  } else {
    passed++;
  }
});
const share = ((100 * accepted) / Number(generated)).toFixed(1);
console.log(`${accepted} of ${generated} generated links are accepted (${share} %), and ` +
  `${passed + failed - accepted} of ${links.length - Number(generated)} of the table`);
if (3 * accepted < Number(generated)) {
  console.log('These are too few to say much.');
  failed++;
}
console.log(`${passed} passed, ${failed} failed`);
process.exitCode = failed > 0 ? 1 : 0;
