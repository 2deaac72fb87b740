// The tables of the page, and how the charts narrow them. All data come from the element `data`.
// Texts reach the page as textContent alone: whatever a log holds, it stays text.
'use strict';
(() => {
  let pageRows = 15;
  const printedRows = 200;
  const shortCell = 240;
  const data = JSON.parse(document.getElementById('data').textContent);
  // What all tables are narrowed to: times in milliseconds, `to` is behind the last; one hour of
  // each day, or -1.
  const span = {from: -Infinity, to: Infinity, hour: -1};

  function make(name, attributes, ...children) {
    const element = document.createElement(name);
    for (const [key, value] of Object.entries(attributes || {})) {
      if (key.startsWith('on')) {
        element.addEventListener(key.slice(2), value);
      } else if (value !== null && value !== false) {
        element.setAttribute(key, value === true ? '' : value);
      }
    }
    element.append(...children);
    return element;
  }
  const counted = (number) => number.toLocaleString('en-US');
  const two = (number) => String(number).padStart(2, '0');

  function timeText(time, digits) {
    const date = new Date(time);
    if (Number.isNaN(date.getTime())) return 'no date';
    const text = date.toISOString().replace('T', ' ').replace('Z', '');
    return digits ? text : text.replace(/:\d\d\.\d+$/, '');
  }

  // ---- Tables in memory: a column is a sorted list of values and a number in it for each row.

  function sums(differences) {
    const out = new Float64Array(differences.length);
    let sum = 0;
    for (let i = 0; i < out.length; i++) out[i] = sum += differences[i];
    return out;
  }

  const levels = ['informational', 'low', 'medium', 'high', 'critical'];

  function readColumn(column, rows) {
    const small = column.values.length <= 65536;
    const codes = small ? new Uint16Array(rows) : new Uint32Array(rows);
    if (column.rows) codes.set(column.rows);
    if (column.name === 'level') {  // by weight, not by name
      const order = column.values.map((_, i) => i);
      order.sort((a, b) => levels.indexOf(column.values[a]) - levels.indexOf(column.values[b]));
      const place = [];
      order.forEach((old, now) => { place[old] = now; });
      column.values = order.map((old) => column.values[old]);
      for (let i = 0; i < rows; i++) codes[i] = place[codes[i]];
    }
    return {name: column.name, label: column.label, values: column.values, codes, folded: null};
  }

  function readTable(table) {
    const rows = table.time.length;
    return {
      name: table.name, title: table.title, total: table.total, rows,
      time: sums(table.time), record: sums(table.record), log: sums(table.log),
      columns: table.columns.map((column) => readColumn(column, rows)),
    };
  }

  // The first row whose time is not before `time`.
  function lowerBound(times, time) {
    let from = 0, to = times.length;
    while (from < to) {
      const middle = (from + to) >> 1;
      if (times[middle] < time) from = middle + 1; else to = middle;
    }
    return from;
  }

  // The rows of the span, one after the other.
  function* rowsOfSpan(table) {
    const end = lowerBound(table.time, span.to);
    for (let row = lowerBound(table.time, span.from); row < end; row++) {
      if (span.hour < 0 || hourOf(table.time[row]) === span.hour) yield row;
    }
  }
  const hourOf = (time) => ((Math.floor(time / 3600000) % 24) + 24) % 24;

  // For each word of the search: which values of each column have it.
  function searchMasks(columns, search) {
    return search.toLowerCase().split(/\s+/).filter(Boolean).map((word) =>
      columns.map((column) => {
        column.folded ??= column.values.map((value) => String(value).toLowerCase());
        return Uint8Array.from(column.folded, (value) => value.includes(word) ? 1 : 0);
      }));
  }

  // ---- Tables on the page

  class TableView {
    // `picks`: columns with a list to choose one of their values from.
    constructor(table, options) {
      this.table = table;
      this.options = options;
      this.search = '';
      this.filters = new Map();  // column -> the wanted values' numbers, and a text for them
      this.sort = options.sort || {column: -1, down: false};  // -1: time
      this.page = 0;
      this.build();
    }

    build() {
      const {table} = this;
      this.count = make('span', {class: 'count', role: 'status'});
      this.chips = make('div', {class: 'chips'});
      this.body = make('tbody');
      this.head = make('tr');
      this.pager = make('div', {class: 'pager'});
      let waiting = 0;
      this.searchField = make('input', {
        type: 'search', placeholder: 'Search', 'aria-label': 'Search in ' + table.title,
        oninput: () => {
          clearTimeout(waiting);
          waiting = setTimeout(() => { this.search = this.searchField.value; this.change(); }, 120);
        },
      });
      this.picks = make('div', {class: 'picks'}, ...this.pickLists());
      const title = make('h2', {}, table.title + ' ');
      title.append(this.count);
      this.section = make('section', {id: table.name, class: 'table'}, title);
      if (this.options.hint) this.section.append(make('p', {class: 'hint'}, this.options.hint));
      if (table.total > table.rows) {
        this.section.append(make('p', {class: 'note'},
          `Only the newest ${counted(table.rows)} of ${counted(table.total)} rows are here; ` +
          'zanvik export --format sqlite -o case.db has all.'));
      }
      this.section.append(
        make('div', {class: 'tools'}, this.searchField, this.picks), this.chips,
        make('div', {class: 'wide', tabindex: '0', role: 'region', 'aria-label': table.title},
          make('table', {}, make('thead', {}, this.head), this.body)),
        this.pager);
    }

    pickLists() {
      const wanted = ['computer', 'what', 'logon_type', 'reason', 'level', 'severity'];
      return this.table.columns.filter((column) =>
        wanted.includes(column.name) && column.values.length > 1 && column.values.length <= 60)
        .map((column) => {
          const list = make('select', {
            'aria-label': column.label,
            onchange: () => {
              if (list.value === '') this.setFilter(column, null);
              else this.setFilter(column, [Number(list.value)]);
            },
          }, make('option', {value: ''}, column.label + ': all'));
          column.values.forEach((value, i) => {
            list.append(make('option', {value: i}, value === '' ? '(none)' : String(value)));
          });
          column.list = list;
          return list;
        });
    }

    // The rows that are wanted, in their order.
    find() {
      const {table} = this;
      const masks = searchMasks(table.columns, this.search);
      const filters = [...this.filters];
      const found = [];
      for (const row of rowsOfSpan(table)) {
        if (filters.every(([column, wanted]) => wanted.codes.has(column.codes[row])) &&
            masks.every((word) => word.some((mask, i) => mask[table.columns[i].codes[row]]))) {
          found.push(row);
        }
      }
      return this.inOrder(found);
    }

    // Rows come in the order of time; equal values keep it.
    inOrder(rows) {
      const {column, down} = this.sort;
      if (column < 0) return down ? rows.reverse() : rows;
      const {codes, values} = this.table.columns[column];
      const buckets = Array.from(values, () => null);
      for (const row of rows) (buckets[codes[row]] ??= []).push(row);
      if (down) buckets.reverse();
      return buckets.flatMap((bucket) => bucket || []);
    }

    change() {
      this.page = 0;
      this.show();
    }

    show() {
      this.found = this.find();
      const {found, table} = this;
      this.count.textContent = found.length === table.rows ? counted(found.length)
        : `${counted(found.length)} of ${counted(table.rows)}`;
      this.section.classList.toggle('empty', found.length === 0);
      this.showHead();
      this.showChips();
      this.showPage();
    }

    headCell(label, column) {
      const mine = this.sort.column === column;
      const button = make('button', {
        type: 'button',
        onclick: () => {
          this.sort = {column, down: mine ? !this.sort.down : this.downFirst(column)};
          this.change();
          this.head.children[column + 1].querySelector('button').focus();
        },
      }, label);
      return make('th', {
        scope: 'col', 'aria-sort': mine ? (this.sort.down ? 'descending' : 'ascending') : 'none',
      }, button);
    }
    downFirst(column) {
      return column >= 0 && typeof this.table.columns[column].values[0] === 'number';
    }

    showHead() {
      this.head.replaceChildren(
        this.headCell(this.options.timeLabel || 'Time (UTC)', -1),
        ...this.table.columns.map((column, i) => this.headCell(column.label, i)));
      if (this.table.record) this.head.append(make('th', {scope: 'col'}, 'Record'));
    }

    showChips() {
      this.chips.replaceChildren(...[...this.filters].map(([column, wanted]) =>
        make('button', {
          type: 'button', class: 'chip', 'aria-label': 'Remove the choice of ' + column.label,
          onclick: () => { this.setFilter(column, null); },
        }, `${column.label}: ${wanted.text}  ×`)));
    }

    // Keeps the rows whose column has one of the values with these numbers; all rows for null.
    setFilter(column, codes) {
      if (codes === null) {
        this.filters.delete(column);
      } else {
        const text = codes.map((code) => column.values[code] || '(none)').slice(0, 3).join(', ');
        this.filters.set(column, {codes: new Set(codes), text});
      }
      if (column.list) {
        column.list.value = codes !== null && codes.length === 1 ? String(codes[0]) : '';
      }
      this.change();
    }

    showPage() {
      const first = this.page * pageRows;
      const rows = this.found.slice(first, first + pageRows);
      this.body.replaceChildren(...rows.map((row) => this.rowElement(row)));
      const pages = Math.max(1, Math.ceil(this.found.length / pageRows));
      const turn = (label, page, name) => make('button', {
        type: 'button', disabled: page < 0 || page >= pages || page === this.page,
        'aria-label': name + ', ' + this.table.title,
        onclick: () => { this.page = page; this.showPage(); },
      }, label);
      this.pager.replaceChildren();
      if (pages === 1) return;
      this.pager.append(
        turn('«', 0, 'First page'), turn('‹', this.page - 1, 'Page before'),
        make('span', {}, `${counted(first + 1)} to ${counted(first + rows.length)} of ` +
          counted(this.found.length)),
        turn('›', this.page + 1, 'Next page'), turn('»', pages - 1, 'Last page'));
    }

    rowElement(row) {
      const {table} = this;
      const open = make('button', {
        type: 'button', class: 'open', 'aria-expanded': 'false',
        onclick: () => this.toggle(open, element, row),
      }, timeText(table.time[row], table.record !== undefined));
      const element = make('tr', {}, make('td', {class: 'time'}, open));
      for (const column of table.columns) {
        const value = column.values[column.codes[row]];
        if (typeof value === 'number') {
          element.append(make('td', {class: 'n'}, counted(value)));
        } else {
          const text = value.length > shortCell ? value.slice(0, shortCell) + '…' : value;
          element.append(make('td', {class: column.name}, make('div', {}, text)));
        }
      }
      if (table.record) element.append(make('td', {class: 'n'}, this.recordText(row)));
      return element;
    }
    recordText(row) {
      const record = this.table.record[row];
      return record < 0 ? 'over 2^53' : String(record);
    }

    // Opens or closes the row of all values below a row.
    toggle(button, element, row) {
      const isOpen = button.getAttribute('aria-expanded') === 'true';
      button.setAttribute('aria-expanded', String(!isOpen));
      if (isOpen) {
        element.nextSibling.remove();
        return;
      }
      const {table} = this;
      const list = make('dl');
      for (const column of table.columns) {
        const code = column.codes[row];
        if (column.values[code] === '') continue;
        const value = make('dd', {}, make('span', {}, String(column.values[code])));
        if (column.values.length > 1 && (!this.options.only || column.name === 'key')) {
          value.append(' ', make('button', {
            type: 'button', class: 'only', onclick: () => this.only(column, code),
          }, 'only this'));
        }
        list.append(make('dt', {}, column.label), value);
      }
      if (table.record) {
        const near = make('button', {
          type: 'button', class: 'only',
          onclick: () => setSpan(table.time[row] - 300000, table.time[row] + 300001, -1),
        }, 'five minutes before and after');
        list.append(make('dt', {}, 'Time'),
          make('dd', {}, timeText(table.time[row], true) + ' UTC ', near),
          make('dt', {}, 'Record'),
          make('dd', {}, `${this.recordText(row)} of ${data.logs[table.log[row]] || 'several logs'}`));
      }
      element.after(make('tr', {class: 'details'},
        make('td', {colspan: String(element.children.length)}, list)));
    }

    only(column, code) {
      if (this.options.only) this.options.only(column.values[code]);
      else this.setFilter(column, [code]);
    }
  }

  // ---- Tables that count rows of others: by account, by address, by rule

  // An address as all logs would write it.
  function plainAddress(text) {
    return text.replace(/^::ffff:/i, '').replace(/^(\d+\.\d+\.\d+\.\d+):\d+$/, '$1');
  }

  function columnOf(table, name) {
    return table && table.columns.find((column) => column.name === name);
  }

  // Counts the rows of the span by a key, in any case of letters. `sources`: {table, column, label};
  // several may share a label. `keys` makes a list of keys of a value.
  function countBy(sources, keys) {
    const labels = [...new Set(sources.map((source) => source.label))];
    const groups = new Map();
    for (const {table, column, label} of sources) {
      const keysOf = column.values.map((value) => keys(value).map((key) => [key, key.toLowerCase()]));
      const at = labels.indexOf(label);
      for (const row of rowsOfSpan(table)) {
        for (const [key, folded] of keysOf[column.codes[row]]) {
          let group = groups.get(folded);
          if (!group) {
            group = {key, counts: new Array(labels.length).fill(0), first: Infinity, last: -Infinity,
              table, row};
            groups.set(folded, group);
          }
          group.counts[at]++;
          group.first = Math.min(group.first, table.time[row]);
          group.last = Math.max(group.last, table.time[row]);
        }
      }
    }
    return {labels, groups: [...groups.values()].sort((a, b) => a.first - b.first)};
  }

  // ---- Remote desktop sessions, put together from their events

  const sessionStarts = ['session logon', 'session reconnected'];
  const sessionEnds = ['session logoff', 'session disconnected', 'disconnected by another session'];

  function durationText(milliseconds) {
    const seconds = Math.floor(milliseconds / 1000);
    return `${two(Math.floor(seconds / 3600))}:${two(Math.floor(seconds / 60) % 60)}:${two(seconds % 60)}`;
  }

  // A session lasts from its logon or reconnection to the next event that ends it. The session
  // manager numbers its sessions; the security log names them, and counts where the other has none.
  function sessionsOf(table) {
    const text = (name, row) => {
      const column = columnOf(table, name);
      return column ? String(column.values[column.codes[row]]) : '';
    };
    const isNumbered = (row) => /^\d+$/.test(text('session', row));
    const numbered = new Set();
    for (let row = 0; row < table.rows; row++) {
      if (isNumbered(row)) numbered.add(text('computer', row));
    }
    const sessions = [], open = new Map();
    const add = (session) => {
      // A logon at the machine itself is no remote one.
      if (text('source_address', session.row).toLowerCase() !== 'local') sessions.push(session);
    };
    for (let row = 0; row < table.rows; row++) {
      const what = text('what', row), computer = text('computer', row);
      const starts = sessionStarts.includes(what);
      if (!starts && !sessionEnds.includes(what)) continue;
      if (numbered.has(computer) && !isNumbered(row)) continue;
      const key = JSON.stringify([computer, text('session', row)]);
      const begun = open.get(key);
      open.delete(key);
      if (starts) {
        if (begun) add({...begun, how: 'no end in the logs'});
        open.set(key, {row, ended: '', duration: ''});
      } else if (begun) {
        const time = table.time[row];
        add({...begun, ended: timeText(time, true), how: what,
          duration: durationText(time - table.time[begun.row])});
      } else {
        add({row, ended: timeText(table.time[row], true), duration: '', how: what + ', no start in the logs'});
      }
    }
    for (const begun of open.values()) add({...begun, how: 'no end in the logs'});
    return sessions.sort((a, b) => a.row - b.row);
  }

  function sessionTable(table) {
    const sessions = sessionsOf(table);
    const labels = [['computer', 'Computer'], ['account', 'Account'], ['domain', 'Domain'],
      ['source_address', 'Source address'], ['source_host', 'Source host'], ['session', 'Session']];
    const columns = labels.flatMap(([name, label]) => {
      const column = columnOf(table, name);
      return column ? [codedColumn(name, label, sessions.map(({row}) => column.values[column.codes[row]]))] : [];
    });
    for (const [name, label] of [['ended', 'Ended (UTC)'], ['duration', 'Duration'], ['how', 'How']]) {
      columns.push(codedColumn(name, label, sessions.map((session) => session[name])));
    }
    const at = (values) => Float64Array.from(sessions, ({row}) => values[row]);
    return {name: 'rdp_sessions', title: 'Remote desktop sessions', total: sessions.length,
      rows: sessions.length, time: at(table.time), record: at(table.record), log: at(table.log), columns};
  }

  function codedColumn(name, label, values) {
    const different = [...new Set(values)];
    if (typeof values[0] === 'number') different.sort((a, b) => a - b);
    else different.sort((a, b) => a.localeCompare(b, 'en', {numeric: true, sensitivity: 'base'}));
    const place = new Map(different.map((value, i) => [value, i]));
    return {name, label, values: different, folded: null,
      codes: Uint32Array.from(values, (value) => place.get(value))};
  }

  class CountView extends TableView {
    constructor(name, title, keyLabel, sources, keys, options) {
      super({name, title, total: 0, rows: 0, time: [], columns: []}, options);
      Object.assign(this, {keyLabel, sources, keys});
    }
    show() {
      const {labels, groups} = countBy(this.sources, this.keys);
      const sort = this.sort;
      this.table.rows = this.table.total = groups.length;
      this.table.time = Float64Array.from(groups, (group) => group.first);
      this.table.columns = [
        codedColumn('key', this.keyLabel, groups.map((group) => group.key)),
        ...labels.map((label, i) => codedColumn('n' + i, label, groups.map((group) => group.counts[i]))),
        codedColumn('last', 'Last (UTC)', groups.map((group) => timeText(group.last, false))),
      ];
      if (this.options.also) {
        const from = this.options.also;
        const column = codedColumn(from, 'Level', groups.map((group) => {
          const source = columnOf(group.table, from);
          return source ? source.values[source.codes[group.row]] : '';
        }));
        const known = readColumn({...column, rows: column.codes}, groups.length);
        this.table.columns.push(known);
      }
      this.sort = sort.column < this.table.columns.length ? sort : {column: -1, down: false};
      super.show();
    }
    // Its rows are of the span already.
    find() {
      const {table} = this;
      const masks = searchMasks(table.columns, this.search);
      const found = [];
      for (let row = 0; row < table.rows; row++) {
        if (masks.every((word) => word.some((mask, i) => mask[table.columns[i].codes[row]]))) {
          found.push(row);
        }
      }
      // Of equal levels, the more frequent first.
      const {sort, options} = this;
      if (options.also && sort.column === this.table.columns.length - 1) {
        this.sort = {column: 1, down: true};
        const byCount = this.inOrder(found);
        this.sort = sort;
        return this.inOrder(byCount);
      }
      return this.inOrder(found);
    }
  }

  // ---- The page

  const tables = new Map(data.tables.map((table) => [table.name, readTable(table)]));
  const views = new Map();
  const place = document.getElementById('tables');

  function addView(view) {
    views.set(view.table.name, view);
    place.append(view.section);
  }

  // Shows only rows with this value of the column, where a table has it.
  function chooseEverywhere(names, columnName, fits) {
    let first = null;
    for (const name of names) {
      const view = views.get(name);
      const column = view && columnOf(view.table, columnName);
      if (!column) continue;
      const codes = [...column.values.keys()].filter((code) => fits(column.values[code]));
      if (codes.length === 0) continue;
      view.setFilter(column, codes);
      first ??= view;
    }
    if (first) first.section.scrollIntoView();
  }

  function addCounts(name, title, label, columnName, parts, keys, hint, options = {}) {
    const sources = parts.map(([table, part]) =>
      ({table: tables.get(table), column: columnOf(tables.get(table), columnName), label: part}))
      .filter((source) => source.column);
    if (sources.length === 0) return;
    addView(new CountView(name, title, label, sources, keys, {
      timeLabel: 'First (UTC)', hint, sort: {column: 1, down: true},
      only: (value) => chooseEverywhere(parts.map(([table]) => table), columnName,
        (known) => keys(known).some((key) => key.toLowerCase() === value.toLowerCase())),
      ...options,
    }));
  }

  function addTable(name) {
    if (tables.has(name)) addView(new TableView(tables.get(name), {}));
  }

  const oneKey = (value) => value === '' ? [] : [value];
  addCounts('by_rule', 'Matches by rule', 'Rule', 'rule', [['matches', 'Matches']], oneKey, '',
    {also: 'level', sort: {column: 3, down: true}});
  addCounts('by_technique', 'Matches by technique', 'Technique', 'techniques',
    [['matches', 'Matches']], (value) => value === '' ? [] : value.split(', '), '');
  addTable('matches');
  addCounts('by_account', 'Accounts', 'Account', 'account',
    [['failed_logons', 'Failed logons'], ['logons', 'Logons'], ['rdp', 'Remote desktop']],
    (value) => oneKey(value.slice(value.lastIndexOf('\\') + 1)), '');
  addCounts('by_address', 'Source addresses', 'Address', 'source_address',
    [['failed_logons', 'Failed logons'], ['logons', 'Logons'], ['rdp', 'Remote desktop']],
    (value) => value === '' ? [] : [plainAddress(value)], '');
  for (const name of [...tables.keys()]) {
    if (name === 'matches') continue;
    if (name === 'rdp') {
      const sessions = sessionTable(tables.get(name));
      if (sessions.rows !== 0) addView(new TableView(sessions, {timeLabel: 'Began (UTC)'}));
    }
    addTable(name);
  }

  // ---- The span

  const fromField = make('input', {type: 'datetime-local', step: '1', 'aria-label': 'From (UTC)'});
  const toField = make('input', {type: 'datetime-local', step: '1', 'aria-label': 'To (UTC)'});
  const spanText = make('strong', {role: 'status'});
  const all = make('button', {type: 'button', onclick: () => setSpan(-Infinity, Infinity, -1)},
    'All times');
  const bar = make('div', {class: 'bar'}, make('span', {}, 'Time span: '), spanText, fromField,
    make('span', {}, 'to'), toField, make('span', {}, 'UTC'), all);
  place.before(bar);

  const fieldTime = (field) => field.value === '' ? null : Date.parse(field.value + 'Z');
  for (const field of [fromField, toField]) {
    field.addEventListener('change', () => {
      setSpan(fieldTime(fromField) ?? -Infinity, fieldTime(toField) ?? Infinity, -1);
    });
  }

  function fieldText(time) {
    const date = new Date(time);
    return Number.isFinite(time) && !Number.isNaN(date.getTime()) && date.getUTCFullYear() < 10000
      ? date.toISOString().slice(0, 19) : '';
  }

  function setSpan(from, to, hour) {
    Object.assign(span, {from, to, hour});
    const whole = from === -Infinity && to === Infinity && hour < 0;
    fromField.value = fieldText(from);
    toField.value = fieldText(to);
    spanText.textContent = whole ? 'all' : hour < 0 ? 'chosen'
      : `from ${two(hour)} to ${two((hour + 1) % 24)} h of each day`;
    all.disabled = whole;
    bar.classList.toggle('chosen', !whole);
    for (const chart of charts) chart.mark();
    for (const view of views.values()) { view.page = 0; view.show(); }
  }

  // ---- Charts

  const tip = make('div', {class: 'tip', role: 'status', hidden: true});
  document.body.append(tip);

  class Chart {
    // `cells`: [column, row] -> count; `names`: of the rows; `hourly`: rows are hours
    constructor(svg, columns, rows, cells, names, hourly) {
      Object.assign(this, {svg, columns, rows, cells, names, hourly, at: null, anchor: null});
      this.picked = this.box('picked');
      this.cursor = this.box('cursor');
      svg.addEventListener('pointermove', (event) => this.move(event));
      svg.addEventListener('pointerleave', () => { this.cursorTo(null); this.anchor = null; });
      svg.addEventListener('pointerdown', (event) => {
        this.anchor = this.cellAt(event);
        event.preventDefault();
        svg.focus({preventScroll: true});
      });
      svg.addEventListener('pointerup', (event) => this.choose(this.anchor, this.cellAt(event)));
      svg.addEventListener('keydown', (event) => this.key(event));
      svg.addEventListener('blur', () => this.cursorTo(null));
    }
    box(name) {
      const box = document.createElementNS('http://www.w3.org/2000/svg', 'rect');
      box.setAttribute('class', name);
      box.setAttribute('width', '0');
      this.svg.append(box);
      return box;
    }
    place(box, column, row, width, height) {
      const unit = this.svg.viewBox.baseVal.height / this.rows;
      const set = {x: column, y: row * unit, width, height: height * unit};
      for (const [key, value] of Object.entries(set)) box.setAttribute(key, value);
    }
    cellAt(event) {
      const area = this.svg.getBoundingClientRect();
      const share = (value, most) => Math.max(0, Math.min(most - 1, Math.floor(value * most)));
      return {column: share((event.clientX - area.left) / area.width, this.columns),
        row: share((event.clientY - area.top) / area.height, this.rows)};
    }
    move(event) {
      const at = this.cellAt(event);
      this.cursorTo(at);
      if (this.anchor && this.anchor.column !== at.column) {
        this.place(this.picked, Math.min(this.anchor.column, at.column), 0,
          Math.abs(at.column - this.anchor.column) + 1, this.rows);
      }
      tip.style.left = Math.max(4, Math.min(event.clientX + 14, innerWidth - tip.offsetWidth - 8)) +
        'px';
      tip.style.top = event.clientY + 18 + 'px';
    }
    cursorTo(at) {
      this.at = at;
      tip.hidden = !at;
      if (!at) {
        this.cursor.setAttribute('width', '0');
        return;
      }
      this.place(this.cursor, at.column, at.row, 1, 1);
      const count = this.cells.get(at.column * this.rows + at.row) || 0;
      const {starts, ends, unit} = data.chart;
      const day = timeText(starts[at.column], false).slice(0, 10) + (unit === 'day' ? ''
        : ' to ' + timeText(ends[at.column] - 1, false).slice(0, 10));
      tip.textContent = `${day}, ${this.names(at.row)}: ${counted(count)}`;
    }
    choose(from, to) {
      this.anchor = null;
      if (!from) return;
      const first = Math.min(from.column, to.column), last = Math.max(from.column, to.column);
      const {starts, ends, unit} = data.chart;
      if (!this.hourly || first !== last) {
        setSpan(starts[first], ends[last], -1);
      } else if (unit === 'day') {
        setSpan(starts[first] + to.row * 3600000, starts[first] + (to.row + 1) * 3600000, -1);
      } else {
        setSpan(starts[first], ends[first], to.row);
      }
    }
    key(event) {
      const moves = {ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1]};
      if (event.key in moves) {
        const [x, y] = moves[event.key], at = this.at || {column: 0, row: 0};
        const keep = (value, most) => Math.max(0, Math.min(most - 1, value));
        this.cursorTo(this.at ? {column: keep(at.column + x, this.columns),
          row: keep(at.row + y, this.rows)} : at);
        const area = this.svg.getBoundingClientRect();
        tip.style.left = Math.max(4, area.left) + 'px';
        tip.style.top = Math.min(area.bottom + 4, innerHeight - 40) + 'px';
      } else if ((event.key === 'Enter' || event.key === ' ') && this.at) {
        this.choose(this.at, this.at);
      } else if (event.key === 'Escape') {
        setSpan(-Infinity, Infinity, -1);
      } else {
        return;
      }
      event.preventDefault();
    }
    // Shows which columns the span has.
    mark() {
      const {starts, ends} = data.chart;
      const first = ends.findIndex((end) => end > span.from);
      let last = starts.length - 1;
      while (last >= 0 && starts[last] >= span.to) last--;
      const none = first < 0 || last < first || (span.from === -Infinity && span.to === Infinity);
      const oneHour = this.hourly && first === last && span.to - span.from === 3600000;
      const hour = oneHour ? hourOf(span.from) : this.hourly ? span.hour : -1;
      this.place(this.picked, Math.max(first, 0), hour < 0 ? 0 : hour, none ? 0 : last - first + 1,
        hour < 0 ? this.rows : 1);
    }
  }

  const charts = [];
  document.querySelectorAll('.chart').forEach((element, number) => {
    const host = data.chart.hosts[number], columns = data.chart.starts.length;
    const hours = new Map();
    for (let i = 0; i < host.hours.length; i += 3) {
      hours.set(host.hours[i] * 24 + host.hours[i + 1], host.hours[i + 2]);
    }
    charts.push(new Chart(element.querySelector('.hours'), columns, 24, hours,
      (hour) => `${two(hour)} to ${two((hour + 1) % 24)} h, events`, true));
    if (host.lanes.length === 0) return;
    const lanes = new Map();
    host.lanes.forEach((lane, row) => {
      for (let i = 0; i < lane.days.length; i += 2) {
        lanes.set(lane.days[i] * host.lanes.length + row, lane.days[i + 1]);
      }
    });
    charts.push(new Chart(element.querySelector('.lanes'), columns, host.lanes.length, lanes,
      (row) => host.lanes[row].name, false));
  });

  // What stands out leads to the rows that say so.
  for (const button of document.querySelectorAll('button[data-table]')) {
    button.addEventListener('click', () => {
      const view = views.get(button.dataset.table);
      if (!view) return;
      if (button.dataset.from) {
        setSpan(Number(button.dataset.from), Number(button.dataset.to), -1);
      }
      view.filters.clear();
      view.search = view.searchField.value = button.dataset.find || '';
      view.change();
      view.section.scrollIntoView();
    });
  }

  // On paper nobody turns pages.
  function showRows(count) {
    pageRows = count;
    for (const view of views.values()) { view.page = 0; view.showPage(); }
  }
  const screenRows = pageRows;
  window.addEventListener('beforeprint', () => showRows(printedRows));
  window.addEventListener('afterprint', () => showRows(screenRows));

  setSpan(-Infinity, Infinity, -1);
})();
