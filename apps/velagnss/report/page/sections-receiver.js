// The sections about a receiver: its satellites, fixes and positions. Each entry has
//   id, title, half: may share a row with another section
//   missing: why there may be nothing to show; timed: also because the stream carries no time
//   show(receiver, input, group): what is shown, or null when there is nothing
const ReceiverSections = (() => {
  'use strict';

  const style = (name, width) => {
    const { key, dash } = Data.system(name);
    return { color: key, dash, width };
  };

  // A chart of the series that have values; null without any. `rows`: [[label, series, style], ...]
  function lines(group, rows, options) {
    if (!group) return null;
    const present = rows.filter(([, series]) => Data.hasValues(series));
    if (present.length === 0) return null;
    return Lines.chart(
      group,
      present.map(([label, series, one]) => Lines.line(label, series, group.grid, one)),
      options,
    ).figure;
  }

  const kFirstSignal = 'first';
  const signalKey = ({ system }, { name }) => `${Data.system(system).name} ${name}`;

  // The satellites' lines for a choice of signal.
  function signalLines(satellites, choice, grid) {
    return satellites.flatMap((satellite) => {
      const signals = satellite.signals.filter(({ cn0 }) => Data.hasValues(cn0));
      const signal = choice === kFirstSignal ? signals[0] : signals.find((one) => signalKey(satellite, one) === choice);
      return signal ? [Lines.line(satellite.name, signal.cn0, grid, style(satellite.system))] : [];
    });
  }

  function systemLegend(satellites) {
    const present = Data.kSystems.filter(({ key }) => satellites.some(({ system }) => system.toLowerCase() === key));
    return Svg.legend(present.map(({ key, name, dash }) => ({ style: { color: key, dash }, text: name })));
  }

  function cn0Statistics(satellites) {
    return Table.make({
      name: 'cn0',
      caption: 'C/N0 by satellite and signal, dB-Hz',
      columns: [
        'Satellite',
        'System',
        'Signal',
        ...['Values', 'Least', 'Mean', 'Greatest'].map((text) => ({ text, number: true })),
      ],
      rows: satellites.flatMap(({ name, system, signals }) =>
        signals.map((signal) => [
          name,
          Data.system(system).name,
          signal.name + (signal.code ? ` (${signal.code})` : ''),
          Table.numeric(signal.count),
          Table.numeric(signal.min),
          Table.numeric(signal.mean, 1),
          Table.numeric(signal.max),
        ]),
      ),
    });
  }

  const satelliteOptions = (chart) => [['', 'none'], ...chart.content.lines.map(({ label }) => [label, label])];

  function cn0(receiver, input, group) {
    const satellites = receiver.satellites.slice().sort(Data.bySystem);
    if (!group) return null;
    const first = signalLines(satellites, kFirstSignal, group.grid);
    if (first.length === 0) return null;
    const signals = [
      ...new Set(satellites.flatMap((satellite) => satellite.signals.map((signal) => signalKey(satellite, signal)))),
    ];
    const highlight = Figure.choice('Highlight', [], (name) => chart.content.setChosen(name || null, chart));
    const fillHighlight = () => {
      Dom.replace(
        highlight.select,
        satelliteOptions(chart).map(([value, text]) => Dom.make('option', { value }, text)),
      );
      highlight.select.value = chart.content.chosen ?? '';
    };
    const signal = Figure.choice(
      'Signal',
      [[kFirstSignal, 'first of each satellite'], ...signals.map((name) => [name, name])],
      (name) => {
        chart.content.setLines(signalLines(satellites, name, group.grid));
        fillHighlight();
        chart.redraw();
      },
    );
    const chart = Lines.chart(group, first, {
      name: 'cn0',
      title: 'C/N0 over time',
      titled: true,
      unit: 'dB-Hz',
      digits: 0,
      size: 'tall',
      things: 'satellites',
      controls: [signal.element, highlight.element],
      legend: systemLegend(satellites),
      onChosen: (name) => (highlight.select.value = name ?? ''),
    });
    fillHighlight();
    return [chart.figure, Table.onDemand('Statistics by satellite and signal', () => cn0Statistics(satellites))];
  }

  function counts(group, byName, options) {
    if (!byName) return null;
    const { all, ...systems } = byName;
    const rows = Object.keys(systems)
      .sort(Data.systemOrder)
      .map((name) => [Data.system(name).name, systems[name], style(name)]);
    return lines(group, [['all', all, { color: 'ink', width: 2 }], ...rows], {
      unit: '',
      digits: 0,
      whole: true,
      fromZero: true,
      ...options,
    });
  }

  function satellites(receiver, input, group) {
    const charts = [
      counts(group, receiver.in_view, { name: 'in-view', title: 'Satellites in view' }),
      counts(group, receiver.used, { name: 'used', title: 'Satellites used' }),
    ].filter(Boolean);
    return charts.length ? Dom.make('div', { class: 'pair' }, charts) : null;
  }

  const kNoFix = 'none';

  function fixRows({ kinds, periods }, grid) {
    return kinds
      .map((label, kind) => {
        const values = new Array(grid.count).fill(null);
        for (const [from, to, one] of periods) if (one === kind) values.fill(1, from, to + 1);
        return { label, values, style: { color: label === kNoFix ? 'alarm' : 'accent' } };
      })
      .filter(({ values }) => values.some((value) => value !== null))
      .reverse();
  }

  function fixTable({ kinds, periods }, grid) {
    return Table.make({
      name: 'fix',
      caption: 'Periods of each kind of fix',
      columns: ['From (UTC)', 'To (UTC)', 'Fix', { text: 'Duration', number: true }],
      rows: periods.map(([from, to, kind]) => [
        grid.text(from),
        grid.text(to),
        kinds[kind],
        Table.cell(((to - from + 1) * grid.step) / 1000, Format.duration(((to - from + 1) * grid.step) / 1000)),
      ]),
    });
  }

  // Pairs of a name and a count: each count that is not 0 with its share of all of them.
  function shares(pairs) {
    const total = pairs.reduce((sum, [, count]) => sum + count, 0);
    return pairs
      .filter(([, count]) => count)
      .map(([name, count]) => [name, `${Format.number(count)} (${Format.number((100 * count) / total, 1)} %)`]);
  }

  // Not every epoch has a GSA, so types have a total of their own.
  function fix(receiver, input, group) {
    const { kinds, epochs, type } = receiver.fix;
    const types = Object.entries(type).map(([name, count]) => [`Type ${name}`, count]);
    const found = [...shares(kinds.map((kind, i) => [kind, epochs[i]])), ...shares(types)];
    if (found.length === 0) return null;
    const facts = Table.pairs(found);
    const rows = group ? fixRows(receiver.fix, group.grid) : [];
    if (rows.length === 0) return facts;
    const chart = Timeline.chart(group, rows, {
      name: 'fix',
      title: 'Fix',
      titled: true,
      note: 'kind of fix over time',
      label: `Kinds of fix over time: ${rows.map(({ label }) => label).join(', ')}.`,
      reads: (row) => row.label,
      table: () => fixTable(receiver.fix, group.grid),
    });
    return [chart.figure, facts];
  }

  const plain = (dash = []) => ({ color: 'accent', dash });
  const other = (dash = [6, 3]) => ({ color: 'glonass', dash });
  const third = (dash = [2, 2]) => ({ color: 'galileo', dash });

  function position(receiver) {
    const {
      latitude_deg: latitude,
      longitude_deg: longitude,
      height_m: height,
      altitude_m: altitude,
    } = receiver.position;
    return Table.pairs([
      ['Mean position', Format.place(latitude, longitude)],
      ['Mean height above the ellipsoid', Format.isNumber(height) ? Format.withUnit(height, 2, 'm') : null],
      ['Mean altitude above sea level', Format.isNumber(altitude) ? Format.withUnit(altitude, 2, 'm') : null],
    ]);
  }

  function track(receiver, input, group) {
    if (!receiver.position?.track?.length) return null;
    return [
      Plane.track(receiver.position, group?.grid),
      position(receiver),
      lines(group, [['speed', receiver.position.speed_m_per_s, plain()]], {
        name: 'speed',
        title: 'Speed',
        unit: 'm/s',
        digits: 2,
        fromZero: true,
      }),
    ];
  }

  function scatter(receiver) {
    const { position: mean } = receiver;
    if (!mean?.scatter?.length) return null;
    return Plane.scatter(mean.scatter, [mean.radius_50_m, mean.radius_95_m], {
      name: 'scatter',
      title: 'Scatter around the mean',
      note: 'circles hold 50 and 95 % of the positions',
      center: 'mean',
    });
  }

  function height(receiver, input, group) {
    const above = receiver.position?.height_is === 'sea level' ? 'above sea level' : 'above the ellipsoid';
    return lines(group, [['height', receiver.position?.height, plain()]], {
      name: 'height',
      title: `Height ${above}`,
      unit: 'm',
      digits: 2,
    });
  }

  function station(receiver, input, group) {
    const { computed } = receiver;
    if (!computed) return null;
    const chart = lines(
      group,
      [
        ['north', computed.north_m, plain()],
        ['east', computed.east_m, other()],
        ['up', computed.up_m, third()],
      ],
      { name: 'station', title: 'Computed position minus station coordinates', unit: 'm', digits: 3 },
    );
    const points = computed.scatter?.length
      ? Plane.scatter(computed.scatter, [computed.horizontal_50_m, computed.horizontal_95_m], {
          name: 'station-scatter',
          title: 'Scatter around the station',
          note: 'circles hold 50 and 95 % of the positions',
          center: 'station',
        })
      : null;
    return chart || points ? [chart, points] : null;
  }

  const kList = [
    {
      id: 'sky',
      title: 'Sky',
      half: true,
      missing:
        'no azimuths and elevations: they come from GSV sentences, or from RTCM 3 observations with ephemerides and a position',
      show: ({ satellites: all }) => (all.some(({ track: one }) => one.length) ? Sky.chart(all) : null),
    },
    {
      id: 'elevation',
      title: 'C/N0 by elevation',
      half: true,
      missing: 'no satellite has both a C/N0 and an elevation',
      show: ({ elevation }) => (elevation?.some(({ bands }) => bands.length) ? Elevation.chart(elevation) : null),
    },
    {
      id: 'cn0',
      title: 'C/N0 over time',
      timed: true,
      missing: 'no C/N0 with a time: it comes from GSV sentences or RTCM 3 observations',
      show: cn0,
    },
    {
      id: 'satellites',
      title: 'Satellites over time',
      timed: true,
      missing: 'no satellites with a time: they come from GSV, GSA, GGA and GNS sentences or RTCM 3 observations',
      show: satellites,
    },
    { id: 'fix', title: 'Fix', missing: 'no sentence states a kind of fix', show: fix },
    {
      id: 'accuracy',
      title: 'Accuracy',
      half: true,
      timed: true,
      missing: 'no estimate of accuracy: it comes from GST sentences',
      show: ({ accuracy }, input, group) =>
        lines(
          group,
          [
            ['horizontal', accuracy?.horizontal_m, plain()],
            ['vertical', accuracy?.vertical_m, other()],
          ],
          { name: 'accuracy', title: 'Accuracy as the receiver estimates it', unit: 'm', digits: 3, fromZero: true },
        ),
    },
    {
      id: 'dop',
      title: 'Dilution of precision',
      half: true,
      timed: true,
      missing: 'no DOP: it comes from GSA, GGA and GNS sentences',
      show: ({ dop }, input, group) =>
        lines(
          group,
          [
            ['PDOP', dop?.pdop, plain()],
            ['HDOP', dop?.hdop, other()],
            ['VDOP', dop?.vdop, third()],
          ],
          { name: 'dop', title: 'Dilution of precision', titled: true, unit: '', digits: 2, fromZero: true },
        ),
    },
    { id: 'track', title: 'Track', half: true, missing: 'no positions', show: track },
    { id: 'scatter', title: 'Scatter', half: true, missing: 'no positions', show: scatter },
    { id: 'height', title: 'Height', half: true, timed: true, missing: 'no heights with a time', show: height },
    {
      id: 'station',
      title: 'Position against the station',
      half: true,
      missing:
        'no position was computed that could be compared: this takes RTCM 3 observations, ' +
        'ephemerides and the station\u2019s own coordinates',
      show: station,
    },
  ];

  return kList;
})();
