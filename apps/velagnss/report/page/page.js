// Puts the sections together: each has a tile for every input, or for every receiver of every input.
(() => {
  'use strict';

  const { report, inputs } = Data;
  const groups = inputs.map(({ grid }) => (grid ? new TimeChart.Group(grid) : null));

  const kNoTime = 'the stream carries no time';
  const reason = ({ timed, missing }, input) => (timed && !input.grid ? kNoTime : missing);
  const capital = (text) => text[0].toUpperCase() + text.slice(1);
  const sentence = (text) => `${capital(text)}.`;

  // A tile: { heading, input, content }, content is null when there is nothing to show.
  function inputTile(section, input, i) {
    return { heading: input.label, input, content: section.show(input, groups[i]) };
  }
  function receiverHeading(input, receiver) {
    const name = Data.receiverName(receiver);
    if (inputs.length === 1) return capital(name);
    return input.receivers.length > 1 ? `${input.label}, ${name}` : input.label;
  }
  function receiverTiles(section, input, i) {
    if (input.receivers.length === 0) return [{ heading: input.label, input, content: null }];
    return input.receivers.map((receiver) => ({
      heading: receiverHeading(input, receiver),
      input,
      content: section.show(receiver, input, groups[i]),
    }));
  }

  const drawTile = ({ heading, content }, several) =>
    Dom.make('div', { class: 'tile' }, several && Dom.make('h3', {}, heading), content);

  // A line for each reason, with those that it holds for unless it holds for all.
  function drawMissing(section, missing, count) {
    const headings = new Map();
    for (const { heading, input } of missing) {
      const text = reason(section, input);
      headings.set(text, [...(headings.get(text) ?? []), heading]);
    }
    return [...headings].map(([text, concerned]) =>
      Dom.make('p', { class: 'none' }, concerned.length < count ? `${concerned.join(', ')}: ${text}.` : sentence(text)),
    );
  }

  // What has nothing to show takes a line below what has.
  function drawSection(section, tiles) {
    const several = tiles.length > 1;
    const [shown, missing] = [tiles.filter(({ content }) => content), tiles.filter(({ content }) => !content)];
    return {
      half: section.half && shown.length <= 1,
      element: Dom.make(
        'section',
        { id: section.id, 'data-section': section.id, 'aria-labelledby': `${section.id}-title` },
        Dom.make('h2', { id: `${section.id}-title` }, section.title),
        shown.length > 0 &&
          Dom.make(
            'div',
            { class: 'tiles' },
            shown.map((tile) => drawTile(tile, several)),
          ),
        drawMissing(section, missing, tiles.length),
      ),
    };
  }

  const perInput = (section) =>
    drawSection(
      section,
      inputs.map((input, i) => inputTile(section, input, i)),
    );
  const perReceiver = (section) =>
    drawSection(
      section,
      inputs.flatMap((input, i) => receiverTiles(section, input, i)),
    );
  const comparison = { id: 'comparison', title: 'Comparison' };

  // Narrow sections share a row in pairs; one that is left over has a row of its own.
  function pair(sections) {
    for (let i = 0; i + 1 < sections.length; i += 1) {
      if (!sections[i].half || !sections[i + 1].half) continue;
      sections.slice(i, i + 2).forEach(({ element }) => element.classList.add('half'));
      i += 1;
    }
    return sections.map(({ element }) => element);
  }

  function sections() {
    return pair([
      ...(inputs.length > 1 ? [drawSection(comparison, [{ content: Comparison.table(inputs) }])] : []),
      perInput(StreamSections.kSummary),
      ...ReceiverSections.map(perReceiver),
      ...StreamSections.kList.map(perInput),
    ]);
  }

  function subtitle() {
    if (inputs.length > 1) return inputs.map(({ label }) => label).join(', ');
    const { time } = inputs[0].stat;
    return time
      ? `${Format.instant(time.first)} to ${Format.instant(time.last)}, ${Format.duration(time.duration_s)}`
      : sentence(kNoTime);
  }

  function head() {
    const title = inputs.length > 1 ? `${inputs.length} inputs compared` : inputs[0].label;
    document.title = `${title} \u2013 velagnss report`;
    document.getElementById('title').textContent = title;
    document.getElementById('subtitle').textContent = subtitle();
    document.getElementById('source').textContent =
      `Made by velagnss ${report.version}. Charts of times by dygraphs ${Dygraph.VERSION}.`;
    document.getElementById('keys').hidden = false;
  }

  const link = (section) =>
    Dom.make('li', {}, Dom.make('a', { href: `#${section.id}` }, section.querySelector('h2').textContent));

  head();
  const drawn = sections();
  document.getElementById('content').replaceChildren(...drawn);
  document.getElementById('sections').replaceChildren(...drawn.map(link));
  groups.forEach((group) => group?.charts.forEach((chart) => chart.draw()));
})();
