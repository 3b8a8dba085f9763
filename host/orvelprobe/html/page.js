// The kinds of figures, and the page.

function trackKind(data) {
  const times = sums(sums(data.time));
  const high = data.min.map((value, i) => value + data.span[i]);
  const rateStarts = data.rate.map((_, i) => data.rateStart + i * data.rateStep);
  const rates = data.rate.map(value => value * 8 / (data.rateStep / 1e6));
  const gaps = sums(data.gap), overlaps = sums(data.overlap);
  const from = times[0], to = Math.max(data.end, from + (data.step ? 1 : 1e6));
  const step = data.step || to - from;
  const hasSeeks = data.asked.length > 0;
  // A bar of one sample is a typical step wide, so that a gap shows; others reach to the next.
  const width = i => data.perBin === 1 ? step : (times[i + 1] ?? data.end) - times[i];

  function keys(plot, y0) {
    let d = '', last = -1;
    const inView = lowerBound(times, plot.view[0]);
    for (let i = inView; i < times.length && times[i] <= plot.view[1]; i++) {
      const x = Math.round(plot.x(times[i]));
      if (data.keys[i] === 0 || x === last) continue;
      d += rect(x, y0 + 16, x + 1.4, y0 + 26);
      last = x;
    }
    return label(GUTTER - 6, y0 + 25, 'end', 'key') + path('key', d);
  }

  function rate(plot, y0, y1) {
    const first = Math.max(0, lowerBound(rateStarts, plot.view[0]) - 1);
    const last = lowerBound(rateStarts, plot.view[1]);
    let most = 0;
    for (let i = first; i < last; i++) most = Math.max(most, rates[i]);
    const name = data.rateStep === 1e6 ? 'bitrate of each second'
        : `bitrate over ${count(data.rateStep / 1e6)} s each`;
    const scale = plot.axis(y0, y1, name, bits, 0, most);
    // More seconds than pixels: the least and the greatest of each pixel.
    const cell = Math.max(1, Math.ceil((last - first) / plot.inner));
    let top = '', fill = '', band = '';
    for (let i = first; i < last; i += cell) {
      const part = rates.slice(i, Math.min(i + cell, last));
      const max = Math.max(...part), min = Math.min(...part);
      const x0 = plot.clippedX(rateStarts[i]);
      const x1 = plot.clippedX(Math.min(rateStarts[i] + cell * data.rateStep, to));
      fill += rect(x0, scale.y(0), x1, scale.y(max));
      top += `${top ? 'L' : 'M'}${x0.toFixed(1)} ${scale.y(max).toFixed(1)}H${x1.toFixed(1)}`;
      if (cell > 1) band += `M${x0.toFixed(1)} ${scale.y(min).toFixed(1)}V${scale.y(max).toFixed(1)}`;
    }
    return scale.html + path('rate-fill', fill) + path('rate-line', top + band);
  }

  function ranges(plot, starts, lengths, y0, y1) {
    let d = '', end = -1;
    for (let i = 0; i < starts.length; i++) {
      if (starts[i] + lengths[i] < plot.view[0] || starts[i] > plot.view[1]) continue;
      const x0 = plot.clippedX(starts[i]);
      const x1 = Math.max(plot.clippedX(starts[i] + lengths[i]), x0 + 2);
      if (x1 <= end) continue;
      d += rect(Math.max(x0, end), y0, x1, y1);
      end = x1;
    }
    return d;
  }

  function timeLine(plot, y0) {
    const x0 = plot.clippedX(from), x1 = plot.clippedX(to);
    return label(GUTTER - 6, y0 + 19, 'end', 'times') +
        path('track-line', rect(x0, y0 + 10, x1, y0 + 20)) +
        path('overlap', ranges(plot, overlaps, data['overlap-length'], y0 + 10, y0 + 20)) +
        path('gap', ranges(plot, gaps, data['gap-length'], y0 + 10, y0 + 20)) +
        (gaps.length || overlaps.length ? legend(GUTTER, y0 + 34, plot) : '');
  }
  function legend(x, y) {
    let html = '';
    for (const [name, text, there] of [['gap', 'gap', gaps.length],
      ['overlap', 'overlap', overlaps.length]]) {
      if (!there) continue;
      html += path(name, rect(x, y - 8, x + 10, y + 1)) + label(x + 14, y, 'start', text);
      x += 62;
    }
    return html;
  }

  // A row for each seek: a ring where it was asked to, a dot where it landed, a diamond at the
  // target that it named.
  const rowHeight = Math.max(5, Math.min(14, 280 / Math.max(1, data.asked.length)));
  function seeks(plot, y0) {
    let html = label(GUTTER, y0 + 12, 'start', 'seeks', 'name');
    let x = GUTTER + 46;
    html += `<circle class="asked" cx="${x}" cy="${y0 + 8}" r="4"/>` +
        label(x + 8, y0 + 12, 'start', 'asked') +
        `<circle class="landed" cx="${x += 54}" cy="${y0 + 8}" r="3"/>` +
        label(x + 7, y0 + 12, 'start', 'landed');
    if (data.known.some(known => known & 2)) {
      html += diamond(x += 58, y0 + 8) + label(x + 7, y0 + 12, 'start', 'target');
    }
    const visible = us => us >= plot.view[0] && us <= plot.view[1];
    data.asked.forEach((wanted, i) => {
      const y = y0 + 24 + rowHeight * i;
      // What lies outside of the track stands at its end.
      const [asked, landed, target] = [wanted, data.landed[i], data.target[i]].map(
          us => Math.min(Math.max(us, from), to));
      const x = plot.clippedX(asked);
      if (rowHeight > 10) {
        html += label(GUTTER - 6, y + 4, 'end', clock(wanted, wanted < 3600e6 ? 10000 : 1e6));
      }
      if (data.known[i] & 1) {
        html += line('way', x, y, plot.clippedX(landed), y);
        if (visible(landed)) {
          html += `<circle class="landed" cx="${plot.x(landed)}" cy="${y}" r="3"/>`;
        }
        if (data.known[i] & 2 && visible(target)) html += diamond(plot.x(target), y);
      } else if (visible(asked)) {
        const left = x > plot.width / 2;
        html += label(left ? x - 8 : x + 8, y + 4, left ? 'end' : 'start', 'no sample');
      }
      if (visible(asked)) html += `<circle class="asked" cx="${x}" cy="${y}" r="4"/>`;
    });
    return html;
  }
  const diamond = (x, y) =>
      `<path class="target" d="M${x - 3.5} ${y}L${x} ${y - 3.5}L${x + 3.5} ${y}L${x} ${y + 3.5}z"/>`;

  return {
    whole: () => [from, to],
    least: () => Math.min(to - from, Math.max(step * data.perBin * 8, 10)),
    tick: timeStep,
    tickText: clock,
    viewText: ([begin, end]) => begin <= from && end >= to
        ? 'Point at the plot for values, drag over it to zoom.'
        : `${clock(begin, (end - begin) / 500)} to ${clock(end, (end - begin) / 500)}`,
    panels: plot => {
      const panels = [{
        height: plot.width < 500 ? 150 : 190,
        draw: (y0, y1) => plot.bars(y0, y1, 'sample size', bytes,
            { starts: times, low: data.min, high, width, marked: data.allKeys ? null : data.keys }),
      }];
      if (!data.allKeys) panels.push({ height: 28, draw: y0 => keys(plot, y0) });
      panels.push({
        height: 96,
        draw: (y0, y1) => rate(plot, y0 + 8, y1),
      });
      if (data.times) {
        panels.push({
          height: gaps.length || overlaps.length ? 42 : 26,
          draw: y0 => timeLine(plot, y0),
        });
      }
      if (hasSeeks) {
        panels.push({
          height: 32 + rowHeight * data.asked.length,
          draw: y0 => seeks(plot, y0),
        });
      }
      return panels;
    },
    at: x => {
      const i = Math.max(0, lowerBound(times, x + 1) - 1);
      const slot = Math.floor((x - data.rateStart) / data.rateStep);
      const size = data.span[i] ? `${count(data.min[i])} to ${count(high[i])} B`
          : `${count(data.min[i])} B`;
      const inside = (starts, lengths) =>
        starts.some((start, j) => x >= start && x <= start + lengths[j]);
      return clock(times[i], 1000) + ': ' + size +
          (data.perBin > 1 ? ` (${count(data.perBin)} samples)` : '') +
          (data.allKeys || !data.keys[i] ? '' : data.perBin === 1 ? ', key'
              : `, ${count(data.keys[i])} key`) +
          (rates[slot] === undefined ? '' : '; ' + bits(rates[slot]) +
              (slot === rates.length - 1 ? ' in the last second, perhaps not full' : '')) +
          (inside(gaps, data['gap-length']) ? '; gap' : '') +
          (inside(overlaps, data['overlap-length']) ? '; overlap' : '');
    },
  };
}

// Along x: samples in the order of the read.
function aheadKind(data) {
  const low = sums(data.min), high = low.map((value, i) => value + data.span[i]);
  const starts = low.map((_, i) => i * data.perBin);
  return {
    whole: () => [0, data.samples],
    least: () => Math.min(data.samples, data.perBin * 8),
    tick: step => Math.max(1, decimalStep(step)),
    tickText: value => count(value),
    viewText: ([begin, end]) => `samples ${count(begin)} to ${count(end)}, as they were read`,
    panels: plot => [{
      height: plot.width < 500 ? 130 : 160,
      draw: (y0, y1) => plot.bars(y0, y1, 'source bytes ahead of samples', bytes,
          { starts, low, high, width: () => data.perBin, marked: null }),
    }],
    at: x => {
      const i = Math.min(Math.floor(x / data.perBin), low.length - 1);
      return `sample ${count(i * data.perBin)}: ` + (data.span[i]
          ? `${bytes(low[i])} to ${bytes(high[i])}` : bytes(low[i])) + ' ahead';
    },
  };
}

// ---- the page

const kinds = { track: trackKind, ahead: aheadKind };
const plots = new Map();  // figure -> Plot; made when the figure first comes near the view

function make(figure) {
  if (plots.has(figure)) return plots.get(figure);
  const plot = new Plot(figure, kinds[figure.dataset.kind](read(figure)));
  plots.set(figure, plot);
  plot.resize();
  return plot;
}

const observer = new IntersectionObserver(entries => {
  for (const entry of entries) {
    if (!entry.isIntersecting) continue;
    observer.unobserve(entry.target);
    make(entry.target);
  }
}, { rootMargin: '600px' });
const figures = document.querySelectorAll('figure.plot');
for (const figure of figures) observer.observe(figure);

const unfold = () => {
  const target = document.getElementById(location.hash.slice(1));
  if (target && target.tagName === 'DETAILS') target.open = true;
};
addEventListener('hashchange', unfold);
unfold();

// On paper as wide as a sheet, whatever the window is.
addEventListener('beforeprint', () => {
  for (const figure of figures) {
    if (figure.closest('details').open) make(figure).draw(PRINT_WIDTH);
  }
});
addEventListener('afterprint', () => {
  for (const plot of plots.values()) plot.draw(Math.floor(plot.figure.clientWidth) || PRINT_WIDTH);
});
