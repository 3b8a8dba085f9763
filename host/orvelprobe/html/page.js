'use strict';
// Draws the figures of the page. Each carries single numbers as data attributes and columns of
// numbers in a text block; no text from a media file is in either.
(() => {
  const GUTTER = 62;  // left of the plot, for labels
  const MARGIN = 10;  // right of it
  const PRINT_WIDTH = 720;

  // ---- numbers in

  // Base64 over integers of seven bits a byte, the lowest first, the sign in the lowest bit.
  function column(text) {
    const bytes = atob(text);
    const values = [];
    for (let i = 0; i < bytes.length;) {
      let value = 0, scale = 1, byte;
      do {
        byte = bytes.charCodeAt(i++);
        value += (byte & 127) * scale;
        scale *= 128;
      } while (byte > 127);
      values.push(value % 2 ? -(value + 1) / 2 : value / 2);
    }
    return values;
  }

  function sums(values) {
    let sum = 0;
    return values.map(value => sum += value);
  }

  function read(figure) {
    const data = {};
    for (const [name, value] of Object.entries(figure.dataset)) data[name] = Number(value);
    for (const line of figure.querySelector('script').textContent.trim().split('\n')) {
      const [name, text] = line.split(' ');
      data[name] = column(text || '');
    }
    return data;
  }

  // First index whose value is not below the one that is looked for.
  function lowerBound(values, wanted) {
    let from = 0, to = values.length;
    while (from < to) {
      const middle = (from + to) >> 1;
      if (values[middle] < wanted) from = middle + 1;
      else to = middle;
    }
    return from;
  }

  // ---- numbers out

  const count = value => Math.round(value).toLocaleString('en-US');

  function withUnit(value, units) {
    let unit = 0, size = Math.abs(value);
    while (size >= 1000 && unit + 1 < units.length) {
      size /= 1000;
      unit++;
    }
    const digits = unit === 0 || Number.isInteger(size) ? 0 : size < 10 ? 2 : size < 100 ? 1 : 0;
    return (value < 0 ? '-' : '') + String(Number(size.toFixed(digits))) + ' ' + units[unit];
  }
  const bytes = value => withUnit(value, ['B', 'kB', 'MB', 'GB', 'TB']);
  const bits = value => withUnit(value, ['b/s', 'kb/s', 'Mb/s', 'Gb/s', 'Tb/s']);

  // "1:02:03.25" with as many decimals as steps of `step` microseconds need.
  function clock(us, step) {
    const decimals = Math.min(6, Math.max(0, Math.ceil(6 - Math.log10(step) - 1e-9)));
    const seconds = Math.abs(us) / 1e6;
    const rounded = Number(seconds.toFixed(decimals));
    const hours = Math.floor(rounded / 3600), minutes = Math.floor(rounded / 60) % 60;
    const rest = (rounded - hours * 3600 - minutes * 60).toFixed(decimals);
    return (us < 0 && rounded > 0 ? '-' : '') + (hours ? count(hours) + ':' : '') +
        (hours ? String(minutes).padStart(2, '0') : minutes) + ':' +
        rest.padStart(decimals ? decimals + 3 : 2, '0');
  }

  // The least of 1, 2, 5, 10, ... that is not below `least`.
  function decimalStep(least) {
    const power = 10 ** Math.floor(Math.log10(least));
    return [1, 2, 5, 10].map(factor => factor * power).find(step => step >= least * 0.999999);
  }

  function timeStep(least) {
    const minute = 60e6, hour = 3600e6;
    const steps = [1e6, 2e6, 5e6, 10e6, 15e6, 30e6, minute, 2 * minute, 5 * minute, 10 * minute,
      15 * minute, 30 * minute, hour, 2 * hour, 3 * hour, 6 * hour, 12 * hour, 24 * hour];
    if (least <= 0.5e6) return Math.max(1, decimalStep(least));
    return steps.find(step => step >= least) || decimalStep(least / hour) * hour;
  }

  // ---- a figure

  const rect = (x0, y0, x1, y1) => `M${x0.toFixed(1)} ${y0.toFixed(1)}H${x1.toFixed(1)}` +
      `V${y1.toFixed(1)}H${x0.toFixed(1)}z`;
  const path = (name, d) => d ? `<path class="${name}" d="${d}"/>` : '';
  const line = (name, x0, y0, x1, y1) =>
      `<line class="${name}" x1="${x0}" y1="${y0}" x2="${x1}" y2="${y1}"/>`;
  const label = (x, y, anchor, text, name = '') =>
      `<text x="${x}" y="${y}" text-anchor="${anchor}" class="${name}">${text}</text>`;

  // What all figures share: the view along x, its axis and its controls. A kind of figure gives
  //   whole()       [from, to] of everything
  //   least()       how far one can zoom in
  //   tick(step)    the least good step from `step` on;  tickText(x, step)
  //   panels(plot)  what is drawn: objects of { height, draw(y0, y1) }
  //   at(x)         what is there, in words
  class Plot {
    constructor(figure, kind) {
      this.figure = figure;
      this.kind = kind;
      this.view = kind.whole();
      this.holder = document.createElement('div');
      this.controls = document.createElement('div');
      this.controls.className = 'controls';
      this.words = document.createElement('output');
      this.controls.append(this.words);
      this.addButton('+', 'zoom in', () => this.zoom(0.5));
      this.out = this.addButton('\u2212', 'zoom out', () => this.zoom(2));
      this.back = this.addButton('\u2039', 'earlier', () => this.move(-0.5));
      this.forth = this.addButton('\u203a', 'later', () => this.move(0.5));
      this.all = this.addButton('all', 'show everything', () => this.show(kind.whole()));
      figure.prepend(this.controls, this.holder);
      this.listen();
      new ResizeObserver(() => this.resize()).observe(figure);
    }

    addButton(text, title, action) {
      const button = document.createElement('button');
      button.type = 'button';
      button.textContent = text;
      button.title = title;
      button.setAttribute('aria-label', title);
      button.addEventListener('click', action);
      this.controls.append(button);
      return button;
    }

    resize() {
      const width = Math.floor(this.figure.clientWidth);
      if (width > 0 && width !== this.width) this.draw(width);
    }

    show([from, to]) {
      const [first, last] = this.kind.whole();
      const span = Math.min(Math.max(to - from, this.kind.least()), last - first);
      from = Math.min(Math.max((from + to - span) / 2, first), last - span);
      this.view = [from, from + span];
      this.draw(this.width);
    }
    zoom(factor) {
      const [from, to] = this.view;
      const middle = (from + to) / 2, half = (to - from) / 2 * factor;
      this.show([middle - half, middle + half]);
    }
    move(share) {
      const by = (this.view[1] - this.view[0]) * share;
      this.show([this.view[0] + by, this.view[1] + by]);
    }

    x(value) {
      return GUTTER + (value - this.view[0]) / (this.view[1] - this.view[0]) * this.inner;
    }
    // x() inside the plot, for what may lie outside.
    clippedX(value) {
      return Math.min(Math.max(this.x(value), GUTTER), GUTTER + this.inner);
    }
    valueAt(event) {
      const box = this.svg.getBoundingClientRect();
      const x = (event.clientX - box.left) * this.width / box.width;
      const share = Math.min(Math.max((x - GUTTER) / this.inner, 0), 1);
      return this.view[0] + share * (this.view[1] - this.view[0]);
    }

    draw(width) {
      this.width = width;
      this.inner = width - GUTTER - MARGIN;
      let y = 0, html = '';
      const panels = this.kind.panels(this);
      for (const panel of panels) {
        html += panel.draw(y, y + panel.height);
        y += panel.height;
      }
      const bottom = y;
      const [from, to] = this.view;
      const step = this.kind.tick((to - from) / Math.max(2, Math.floor(this.inner / 70)));
      let grid = '', texts = '';
      for (let tick = Math.ceil(from / step) * step; tick <= to; tick += step) {
        const x = Math.round(this.x(tick)) + 0.5;
        grid += line('grid', x, 16, x, bottom);
        if (x < width - 24) texts += label(x, bottom + 14, 'middle', this.kind.tickText(tick, step));
      }
      html = grid + html + line('base', GUTTER, bottom + 0.5, width - MARGIN, bottom + 0.5) + texts +
          '<rect class="select" y="0" width="0" height="' + bottom + '"/>' +
          line('cursor', -9, 0, -9, bottom);
      // The document's parser puts it into the right namespace; all of it is numbers and own words.
      this.holder.innerHTML = `<svg viewBox="0 0 ${width} ${bottom + 20}" role="img" ` +
          `aria-label="plot">${html}</svg>`;
      this.svg = this.holder.firstChild;
      this.cursor = this.svg.querySelector('.cursor');
      this.selection = this.svg.querySelector('.select');
      const [first, last] = this.kind.whole();
      this.back.disabled = from <= first;
      this.forth.disabled = to >= last;
      this.out.disabled = this.all.disabled = this.back.disabled && this.forth.disabled;
      this.words.textContent = this.kind.viewText(this.view);
    }

    // Pointing tells what is there; dragging zooms to what was dragged over.
    listen() {
      let begin = null;
      const holder = this.holder;
      holder.addEventListener('pointerdown', event => {
        if (event.button !== 0) return;
        begin = this.valueAt(event);
        holder.setPointerCapture(event.pointerId);
      });
      holder.addEventListener('pointermove', event => {
        const value = this.valueAt(event), x = this.x(value);
        this.cursor.setAttribute('x1', x);
        this.cursor.setAttribute('x2', x);
        this.words.textContent = this.kind.at(value);
        if (begin === null) return;
        const other = this.x(begin);
        this.selection.setAttribute('x', Math.min(x, other));
        this.selection.setAttribute('width', Math.abs(x - other));
      });
      const drop = () => {
        begin = null;
        if (this.selection) this.selection.setAttribute('width', 0);
      };
      holder.addEventListener('pointerup', event => {
        const from = begin, to = this.valueAt(event);
        drop();
        if (from !== null && Math.abs(this.x(to) - this.x(from)) > 6) {
          this.show([Math.min(from, to), Math.max(from, to)]);
        }
      });
      holder.addEventListener('pointercancel', drop);
      holder.addEventListener('pointerleave', () => {
        this.cursor.setAttribute('x1', -9);
        this.cursor.setAttribute('x2', -9);
        this.words.textContent = this.kind.viewText(this.view);
      });
      holder.addEventListener('dblclick', () => this.show(this.kind.whole()));
    }

    // Bars over [start(i), start(i + 1)), dark up to low(i), light up to high(i), as many of them
    // side by side as there are pixels, otherwise merged. With an axis on the left.
    bars(y0, y1, name, unit, bars) {
      const [from, to] = this.view;
      const first = Math.max(0, lowerBound(bars.starts, from) - 1);
      let last = lowerBound(bars.starts, to);
      if (last === first) last = Math.min(first + 1, bars.starts.length);
      const pieces = [];
      if (last - first <= this.inner) {
        for (let i = first; i < last; i++) {
          const end = Math.min(bars.starts[i] + bars.width(i), bars.starts[i + 1] ?? Infinity);
          const x0 = this.x(bars.starts[i]), x1 = this.x(end);
          const wide = x1 - x0 > 4;
          pieces.push([x0, Math.max(x1 - (wide ? 1 : 0), x0 + 1), bars.low[i], bars.high[i],
            bars.marked && bars.marked[i] > 0]);
        }
      } else {
        const at = [];
        for (let i = first; i < last; i++) {
          const x = Math.floor(this.x(bars.starts[i]));
          const piece = at[x];
          if (piece) {
            piece[2] = Math.min(piece[2], bars.low[i]);
            piece[3] = Math.max(piece[3], bars.high[i]);
          } else {
            at[x] = [x, x + 1, bars.low[i], bars.high[i], false];
          }
          if (bars.marked && bars.marked[i] > 0) at[x][4] = true;
        }
        for (const x in at) pieces.push(at[x]);
      }
      let most = 0, least = 0;
      for (const piece of pieces) {
        most = Math.max(most, piece[3]);
        least = Math.min(least, piece[2]);
      }
      const scale = this.axis(y0, y1, name, unit, least, most);
      let low = '', range = '', marked = '';
      for (const [left, right, min, max, mark] of pieces) {
        const x0 = Math.max(left, GUTTER), x1 = Math.min(right, GUTTER + this.inner);
        if (x1 <= x0) continue;
        const foot = scale.y(Math.max(min, 0));
        if (mark) {
          marked += rect(x0, scale.y(0), x1, scale.y(max));
          continue;
        }
        if (min > 0) low += rect(x0, scale.y(0), x1, foot);
        if (max > min) range += rect(x0, min > 0 ? foot : scale.y(min), x1, scale.y(max));
        else if (max <= 0) low += rect(x0, scale.y(max), x1, scale.y(max) - 1);
      }
      return scale.html + path('range', range) + path('low', low) + path('key', marked);
    }

    axis(y0, y1, name, unit, least, most) {
      const top = y0 + 20, span = most - least || 1;
      const step = decimalStep(span / Math.max(1, Math.floor((y1 - top) / 34)));
      const highest = Math.max(Math.ceil(most / step), 1) * step;
      const lowest = Math.floor(least / step) * step;
      const y = value => y1 - (value - lowest) / (highest - lowest) * (y1 - top);
      let html = label(GUTTER, y0 + 12, 'start', name, 'name');
      for (let tick = lowest; tick <= highest + step / 2; tick += step) {
        const at = Math.round(y(tick)) + 0.5;
        html += line(tick === 0 ? 'base' : 'grid', GUTTER, at, GUTTER + this.inner, at);
        html += label(GUTTER - 6, at + 3.5, 'end', unit(Math.abs(tick) < step / 2 ? 0 : tick));
      }
      return { y, html };
    }
  }

  // ---- the kinds of figures

  function trackKind(data) {
    const times = sums(sums(data.time));
    const high = data.min.map((value, i) => value + data.span[i]);
    const rateStarts = data.rate.map((_, i) => data.rateStart + i * data.rateStep);
    const rates = data.rate.map(value => value * 8 / (data.rateStep / 1e6));
    const gaps = sums(data.gap), overlaps = sums(data.overlap);
    const from = times[0], to = Math.max(data.end, from + 1);
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
        if (rowHeight > 10) html += label(GUTTER - 6, y + 4, 'end', clock(wanted, 10000));
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
})();
