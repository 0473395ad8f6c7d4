// Puts the sections together: each has a tile for every input, or for every receiver of every input.
(() => {
  'use strict';

  const { report, inputs } = Data;
  const groups = inputs.map(({ grid }) => (grid ? new TimeChart.Group(grid) : null));

  const missing = (title, reason) => Dom.make('p', { class: 'none' }, `${title}: ${reason}.`);

  // A tile: { heading, content }.
  function inputTile(section, input, i) {
    return { heading: input.name, content: section.show(input, groups[i]) };
  }
  function receiverTiles(section, input, i) {
    if (input.receivers.length === 0) return [{ heading: input.name, content: null }];
    return input.receivers.map((receiver) => ({
      heading: [inputs.length > 1 && input.name, input.receivers.length > 1 && Data.receiverName(receiver)].filter(Boolean).join(', '),
      content: section.show(receiver, input, groups[i]),
    }));
  }

  function drawTile(section, { heading, content }, several) {
    return Dom.make('div', { class: 'tile' }, several && Dom.make('h3', {}, heading),
      content ?? missing(section.title, section.missing));
  }

  function drawSection(section, tiles) {
    const several = tiles.length > 1;
    return Dom.make('section', { id: section.id, 'data-section': section.id, class: section.half && !several && 'half',
      'aria-labelledby': `${section.id}-title` },
      Dom.make('h2', { id: `${section.id}-title` }, section.title),
      Dom.make('div', { class: 'tiles' }, tiles.map((tile) => drawTile(section, tile, several))));
  }

  const perInput = (section) => drawSection(section, inputs.map((input, i) => inputTile(section, input, i)));
  const perReceiver = (section) => drawSection(section, inputs.flatMap((input, i) => receiverTiles(section, input, i)));
  const comparison = { id: 'comparison', title: 'Comparison' };

  function sections() {
    return [
      ...(inputs.length > 1 ? [drawSection(comparison, [{ content: Comparison.table(inputs) }])] : []),
      perInput(StreamSections.kSummary),
      ...ReceiverSections.map(perReceiver),
      ...StreamSections.kList.map(perInput),
    ];
  }

  function head() {
    const names = inputs.map(({ name }) => name).join(', ');
    const title = inputs.length > 1 ? `${inputs.length} inputs compared` : names;
    document.title = `${title} \u2013 velagnss report`;
    document.getElementById('title').textContent = title;
    const [{ stat }] = inputs;
    document.getElementById('subtitle').textContent = inputs.length > 1 ? names
      : stat.time ? `${Format.instant(stat.time.first)} to ${Format.instant(stat.time.last)}, ${Format.duration(stat.time.duration_s)}` : '';
    document.getElementById('source').textContent = `Made by velagnss ${report.version}. Charts of times by dygraphs ${Dygraph.VERSION}.`;
    document.getElementById('keys').hidden = false;
  }

  const link = (section) => Dom.make('li', {}, Dom.make('a', { href: `#${section.id}` }, section.querySelector('h2').textContent));

  head();
  const drawn = sections();
  document.getElementById('content').replaceChildren(...drawn);
  document.getElementById('sections').replaceChildren(...drawn.map(link));
  groups.forEach((group) => group?.charts.forEach((chart) => chart.draw()));
})();
