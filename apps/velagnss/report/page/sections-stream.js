// The sections about an input as a stream of messages. Each entry is as in the sections about a receiver, but show gets
// (input, group).
const StreamSections = (() => {
  'use strict';

  const kOpenRows = 20; // tables up to this length are open from the start
  const kMostRows = 40; // of a chart of messages
  const kProtocols = {
    nmea: 'NMEA 0183',
    rtcm3: 'RTCM 3',
    bin: 'binary protocol',
    pkvn: 'PKVN sentences',
    rd: 'RD1 sentences',
  };
  const protocolName = (key) => kProtocols[key] ?? `${key.toUpperCase()} frames`;

  const right = (text) => ({ text, number: true });
  const seconds = (value) => Table.cell(value, Format.duration(value));

  // "RTCM 3 (2 133 frames), NMEA 0183 (812)", the most frequent first.
  function contents(stat) {
    const counts = new Map();
    for (const { protocol, count } of stat.messages) counts.set(protocol, (counts.get(protocol) ?? 0) + count);
    return (
      [...counts]
        .sort((a, b) => b[1] - a[1])
        .map(([protocol, count], i) => `${protocolName(protocol)} (${Format.number(count)}${i ? '' : ' frames'})`)
        .join(', ') || 'no frames'
    );
  }

  const withPart = (all, part, which) => (all ? `${Format.number(all)}, ${Format.number(part)} of them ${which}` : '0');
  const stationText = ({ station, antenna, receiver }) =>
    [`station ${station}`, receiver, antenna].filter(Boolean).join(', ');

  function summary({ name, stat, receivers, receivers_left_out: leftOut }) {
    const { bytes, frames, time } = stat;
    return Table.pairs([
      ['Input', name],
      ['Contents', contents(stat)],
      ['Time', time ? `${Format.instant(time.first)} to ${Format.instant(time.last)}` : 'the stream carries no time'],
      ['Duration', time ? Format.duration(time.duration_s) : null],
      ['Step between epochs', time?.usual_step_s ? Format.duration(time.usual_step_s) : null],
      ['Bytes', withPart(bytes.total, bytes.damaged, 'in no frame')],
      ['Frames', withPart(frames.good, frames.decoded, 'decoded')],
      ['Bad frames', `${Format.number(frames.bad)} (${Format.number(frames.bad_percent, 2)} %)`],
      [
        'Epochs of',
        receivers.length
          ? receivers.map((one) => `${Data.receiverName(one)} (${Format.number(one.epochs)})`).join(', ')
          : null,
      ],
      ['Not shown', leftOut ? `epochs of ${Format.plural(leftOut, 'further station')}` : null],
      ['Stations', stat.stations.length ? stat.stations.map(stationText).join('; ') : null],
    ]);
  }

  // stat has the counts, the report the steps and gaps.
  function messageTable({ stat, messages }) {
    const steps = new Map(messages.map((row) => [`${row.protocol}/${row.message}`, row]));
    return Table.make({
      name: 'messages',
      caption: 'Messages',
      columns: [
        'Message',
        'Protocol',
        ...['Count', 'Decoded', 'Faults', 'Per second', 'Usual step', 'Longest gap', 'Gaps'].map(right),
      ],
      rows: stat.messages.map((row) => {
        const step = steps.get(`${row.protocol}/${row.message}`);
        return [
          row.message,
          row.protocol,
          Table.numeric(row.count),
          Table.numeric(row.decoded),
          Table.numeric(row.faults),
          Table.numeric(row.per_second, 3),
          seconds(step?.usual_step_s),
          seconds(step?.longest_gap_s),
          Table.numeric(step?.gap_count),
        ];
      }),
    });
  }

  function gapTable(gaps) {
    return Table.make({
      name: 'gaps',
      caption: 'Gaps in time',
      columns: ['From', 'To', right('Length')],
      rows: gaps.map(({ from, to, seconds: length }) => [Format.instant(from), Format.instant(to), seconds(length)]),
    });
  }

  const rate = (message, grid) => Data.expand(message.rate, grid.count).mean;

  // In charts that a sheet of paper has room for.
  function presences(messages, group) {
    const count = Math.ceil(messages.length / kMostRows);
    const size = Math.ceil(messages.length / count);
    const charts = Array.from(
      { length: count },
      (_, i) => presence(messages.slice(i * size, (i + 1) * size), group, count > 1 ? i + 1 : null).figure,
    );
    return Dom.make('div', { class: 'pair' }, charts);
  }

  function presence(messages, group, part) {
    const rows = messages.map((message) => ({
      label: message.message,
      style: { color: 'accent' },
      values: rate(message, group.grid).map((value) => value || null),
    }));
    return Timeline.chart(group, rows, {
      name: part > 1 ? `messages-${part}` : 'messages',
      title: `Messages over time${part ? `, part ${part}` : ''}`,
      note: 'a bar while a message keeps coming',
      label: `When each of ${Format.plural(rows.length, 'message')} came.`,
      reads: (row, bin) => `${row.label} ${Format.number(row.values[bin])}`,
      table: () => messageSteps(messages),
    });
  }

  function messageSteps(messages) {
    return Table.make({
      name: 'message-steps',
      caption: 'Steps and gaps of the messages',
      columns: ['Message', ...['Count', 'Usual step', 'Longest gap', 'Gaps'].map(right)],
      rows: messages.map((row) => [
        row.message,
        Table.numeric(row.count),
        seconds(row.usual_step_s),
        seconds(row.longest_gap_s),
        Table.numeric(row.gap_count),
      ]),
    });
  }

  // Messages per second of one message, or of all.
  function rateLine(messages, label, grid) {
    const perSecond = grid.step / 1000;
    const values = new Array(grid.count).fill(null);
    for (const message of messages) {
      rate(message, grid).forEach((value, bin) => {
        if (value !== null) values[bin] = (values[bin] ?? 0) + value / perSecond;
      });
    }
    return { label, min: values, mean: values, max: values, style: { color: 'accent' } };
  }

  const kAll = 'all messages';

  function rates(messages, group) {
    const choice = Figure.choice(
      'Message',
      [kAll, ...messages.map(({ message }) => message)].map((name) => [name, name]),
      (name) => {
        chart.content.setLines([
          rateLine(
            messages.filter(({ message }) => name === kAll || message === name),
            name,
            group.grid,
          ),
        ]);
        chart.redraw();
      },
    );
    const chart = Lines.chart(group, [rateLine(messages, kAll, group.grid)], {
      name: 'rates',
      title: 'Message rate',
      unit: 'per second',
      digits: 2,
      fromZero: true,
      controls: [choice.element],
    });
    return chart;
  }

  function messages(input, group) {
    if (input.stat.messages.length === 0) return null;
    const leftOut = input.messages_left_out;
    const timed = group ? input.messages.filter(({ rate: series }) => Data.hasValues(series)) : [];
    return [
      messageTable(input),
      leftOut > 0 &&
        Dom.make(
          'p',
          { class: 'none' },
          `Without steps and rates, because there are too many different messages: ${Format.plural(leftOut, 'frame')}.`,
        ),
      timed.length > 0 && presences(timed, group),
      timed.length > 0 && rates(timed, group).figure,
      input.gaps.length > 0
        ? Table.onDemand(
            `Gaps in time: ${Format.number(input.gaps.length)}`,
            () => gapTable(input.gaps),
            input.gaps.length <= kOpenRows,
          )
        : input.stat.time && Dom.make('p', { class: 'none' }, 'Gaps in time: none.'),
    ];
  }

  function latency({ latency: one }, group) {
    if (!one) return null;
    const facts = Table.pairs([
      ['Messages with a time', Format.number(one.count)],
      ['Mean', Format.duration(one.mean_s)],
      ['Least', Format.duration(one.min_s)],
      ['Median', Format.duration(one.p50_s)],
      ['90 % within', Format.duration(one.p90_s)],
      ['99 % within', Format.duration(one.p99_s)],
      ['Greatest', Format.duration(one.max_s)],
    ]);
    if (!group || !Data.hasValues(one.series)) return facts;
    const line = Lines.line('latency', one.series, group.grid, { color: 'accent' });
    return [
      facts,
      Lines.chart(group, [line], { name: 'latency', title: 'Latency', titled: true, unit: 's', digits: 3 }).figure,
    ];
  }

  const health = ({ health: bits, healthy }) =>
    healthy === null ? Format.kMissing : healthy ? 'healthy' : `unhealthy (${bits})`;

  function ephemerides({ ephemerides: all, ephemerides_left_out: leftOut }) {
    if (all.length === 0) return null;
    const table = Table.make({
      name: 'ephemerides',
      caption: 'Ephemerides, the last of each satellite',
      columns: [
        'Satellite',
        'System',
        'Message',
        right('Received'),
        right('Issues'),
        right('Last issue'),
        'Reference time',
        right('Age at the end'),
        'Health',
        'First',
        'Last',
      ],
      rows: all
        .slice()
        .sort(Data.bySystem)
        .map((row) => [
          row.name,
          Data.system(row.system).name,
          row.message,
          Table.numeric(row.count),
          Table.numeric(row.issues),
          Table.numeric(row.issue),
          Format.instant(row.reference_time),
          seconds(row.age_s),
          health(row),
          Format.instant(row.first),
          Format.instant(row.last),
        ]),
    });
    return [
      table,
      leftOut > 0 && Dom.make('p', { class: 'none' }, `Left out: ${Format.plural(leftOut, 'further row')}.`),
    ];
  }

  function eventTable(events) {
    return Table.make({
      name: 'integrity',
      caption: 'Damage, in the order of the stream',
      columns: ['Offset', right('Bytes'), 'Time', 'What', 'Why'],
      rows: events.map(({ offset, length, time, kind, why }) => [
        Table.cell(offset, Format.number(offset)),
        Table.numeric(length),
        Format.instant(time),
        kind,
        why,
      ]),
    });
  }

  function integrity({ stat, integrity: found }, group) {
    const facts = Table.pairs([
      ['Bytes in no frame', Format.number(stat.bytes.damaged)],
      ['Skipped ranges', Format.number(stat.integrity.skipped_ranges)],
      ['Checksum errors', Format.number(stat.integrity.checksum_errors)],
      ['Rejected starts', Format.number(stat.integrity.rejected_starts)],
      [
        'Good frames at the end, found by searching again',
        stat.frames.recovered_at_end ? Format.number(stat.frames.recovered_at_end) : null,
      ],
    ]);
    if (stat.bytes.total === 0) return null;
    if (found.count === 0) return [Dom.make('p', { class: 'none' }, 'No damage: every byte is in a good frame.')];
    const shown = found.events.length;
    const title =
      shown < found.count
        ? `The first ${Format.number(shown)} of ${Format.number(found.count)} events`
        : Format.plural(found.count, 'event');
    const line =
      group && Data.hasValues(found.damaged_bytes)
        ? Lines.chart(group, [Lines.line('skipped', found.damaged_bytes, group.grid, { color: 'alarm' })], {
            name: 'damage',
            title: 'Bytes in no frame over time',
            unit: 'bytes',
            digits: 0,
            whole: true,
            fromZero: true,
          }).figure
        : null;
    return [facts, line, Table.onDemand(title, () => eventTable(found.events), shown <= kOpenRows)];
  }

  function notDecoded({ not_decoded: rows, stat }) {
    if (rows.length === 0) {
      return stat.frames.good ? Dom.make('p', { class: 'none' }, 'Nothing: every message was decoded.') : null;
    }
    return Table.make({
      name: 'not-decoded',
      caption: 'Messages that are only checked, not decoded',
      columns: ['Message', 'Protocol', ...['Count', 'Bytes', 'Share of the input'].map(right)],
      rows: rows.map((row) => [
        row.message,
        row.protocol,
        Table.numeric(row.count),
        Table.numeric(row.bytes),
        Table.cell(row.share_percent, Format.withUnit(row.share_percent, 1, '%')),
      ]),
    });
  }

  const kSummary = { id: 'summary', title: 'Summary', show: summary };
  const kList = [
    { id: 'messages', title: 'Messages', missing: 'no frames were found', show: messages },
    {
      id: 'latency',
      title: 'Latency',
      half: true,
      missing: 'arrival times are not known: recordings with an index and live sources have them',
      show: latency,
    },
    { id: 'not-decoded', title: 'Not decoded', half: true, missing: 'no frames were found', show: notDecoded },
    { id: 'ephemerides', title: 'Ephemerides', missing: 'no ephemerides were received', show: ephemerides },
    { id: 'integrity', title: 'Integrity', missing: 'no bytes were read', show: integrity },
  ];

  return { kSummary, kList };
})();
