// A stream whose texts try to become markup or script, and an input's name that does. Whatever of it came to run would
// call intruder().

const texts = [
  '</script><script>intruder()</script>',
  '</style><style>*{display:none}</style>',
  '<img src=x onerror=intruder()>',
  '<svg/onload=intruder()>',
  '"\'`><b onclick="intruder()">',
  '<!--<script>',
  ']]>&lt;b&gt;&#60;i>&amp',
  '\u2028intruder()\u2029',
  'nul\0bell\x07escape\x1b[31mlines\r\ndelete\x7fcsi\x9b',
  'abc\u202efed\u2066ghi\u200f\ufeff',
  '\\u003cimg src=x\\u003e\\',
  '${intruder()}{{intruder()}}',
  'javascript:intruder()',
  '__proto__',
  'W'.repeat(200),
];

/** The directory's name ends in "<", and a file's name may have any byte but "/" and NUL. */
export const hostileDirectory = '<';
export const hostileFile = 'script><img src=x onerror=intruder()>\'"&\u2028\u202e\x07\n]]>\ufeff.bin';

function crc24q(bytes) {
  let crc = 0;
  for (const byte of bytes) {
    crc ^= byte << 16;
    for (let bit = 0; bit < 8; ++bit) crc = crc & 0x800000 ? ((crc << 1) ^ 0x1864cfb) & 0xffffff : crc << 1;
  }
  return [crc >> 16, (crc >> 8) & 0xff, crc & 0xff];
}

/** An RTCM 3 frame; `fields` are pairs of a value and its number of bits. */
function rtcm3(...fields) {
  const bits = fields.map(([value, width]) => value.toString(2).padStart(width, '0')).join('');
  const payload = (bits + '0'.repeat(-bits.length & 7)).match(/.{8}/g).map((byte) => parseInt(byte, 2));
  const frame = [0xd3, payload.length >> 8, payload.length & 0xff, ...payload];
  return Buffer.from([...frame, ...crc24q(frame)]);
}

const countedText = (text) => [[Buffer.byteLength(text), 8], ...[...Buffer.from(text)].map((byte) => [byte, 8])];

const antenna = (station, text) =>
  rtcm3([1033, 12], [station, 12], ...countedText(text), [0, 8],  // setup
        ...countedText(text), ...countedText(text), ...countedText(text), ...countedText(text));

const message = (station, text) =>
  rtcm3([1029, 12], [station, 12], [60448, 16], [86220, 17], [[...text].length & 0x7f, 7], ...countedText(text));

function sentence(body) {
  const bytes = Buffer.from(body);
  const sum = bytes.reduce((total, byte) => total ^ byte, 0);
  return Buffer.concat([Buffer.from('$'), bytes, Buffer.from('*' + sum.toString(16).toUpperCase().padStart(2, '0') + '\r\n')]);
}

/** Texts in every field that carries one: of stations, messages, sentences; and as the address of a sentence. */
export function hostileStream() {
  const frames = texts.flatMap((text, index) => [
    antenna(100 + index, text), message(100 + index, text), sentence(`GPTXT,01,01,02,${text}`), sentence(`${text},1`),
    sentence(`GN${text.slice(0, 3)},1`), Buffer.from(text)]);
  return Buffer.concat(frames);
}
