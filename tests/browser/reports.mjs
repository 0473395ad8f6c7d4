// The reports that are looked at, made by the program from the sample session and from what it is not.

import { spawnSync } from 'node:child_process';
import { mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { hostileDirectory, hostileFile, hostileStream } from './hostile.mjs';

const { VELAGNSS: program, SAMPLES: samples } = process.env;

/** What the program prints; 1 says that an input has nothing in it. */
function run(directory, ...args) {
  const { error, status, stdout, stderr } = spawnSync(program, args, { cwd: directory, maxBuffer: 1 << 28 });
  if (error || status > 1) throw error ?? new Error(`velagnss ${args.join(' ')}: ${status}: ${stderr}`);
  return stdout;
}

/** Bytes among which no frame is found: the low bits of a linear congruence, without those that start a frame. */
function noise(size) {
  let state = 1;
  return Buffer.from(Array.from({ length: size }, () => (state = (state * 1103515245 + 12345) % 2 ** 31) >> 16 & 0x1f));
}

function makeInputs(directory) {
  const session = readFileSync(join(samples, 'session.bin'));
  const write = (name, bytes) => writeFileSync(join(directory, name), bytes);
  write('session.bin', session);
  for (const protocol of ['nmea', 'rtcm3']) write(`${protocol}.bin`, run(directory, 'extract', '--proto', protocol, 'session.bin'));
  write('empty.bin', '');
  write('noise.bin', noise(10000));
  mkdirSync(join(directory, hostileDirectory));
  write(join(hostileDirectory, hostileFile), Buffer.concat([hostileStream(), session]));
}

const inputsOf = {
  session: ['session.bin'],
  nmea: ['nmea.bin'],
  rtcm3: ['rtcm3.bin'],
  empty: ['empty.bin'],
  noise: ['noise.bin'],
  several: ['session.bin', 'nmea.bin', 'rtcm3.bin', 'empty.bin'],
  hostile: [`${hostileDirectory}/${hostileFile}`, 'session.bin'],
};

export const names = Object.keys(inputsOf);

/** By name: the page's file, its numbers as `report --json` prints them, and what `stat --json` says of each input. */
export function makeReports() {
  const directory = mkdtempSync(join(tmpdir(), 'velagnss-report-'));
  process.on('exit', () => rmSync(directory, { recursive: true }));
  makeInputs(directory);
  return Object.fromEntries(names.map((name) => {
    const inputs = inputsOf[name];
    const file = join(directory, `${name}.html`);
    run(directory, 'report', '-o', file, ...inputs);
    return [name, {
      file,
      json: JSON.parse(run(directory, 'report', '--json', ...inputs)),
      stat: inputs.map((input) => JSON.parse(run(directory, 'stat', '--json', '--positions', input))),
    }];
  }));
}
