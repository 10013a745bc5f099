// The search field of the site. It replaces Doxygen's script of this name, which finds only the beginnings of names.
// lunr ranks the sections of all pages. The texts are in a script, searchdata.js, because a page that is read from
// the file system cannot fetch a file. They are loaded when the field is first used.

// Has the functions that Doxygen's pages call.
class SearchBox {
    constructor(name, folder) { SearchBox.folder = folder; }
    OnSearchFieldFocus(active) { if (active) open(document.getElementById('MSearchField')); }
    OnSearchFieldChange() {}
    OnSearchSelectShow() {}
    OnSearchSelectHide() {}
    OnSearchSelectKey() {}
    CloseResultsWindow() { close(); }

    // Makes a telephone's menu entry from a navigation entry; `children` names the variable that has its children.
    static menu([text, url, children]) {
        const pages = (window[children] ?? []).filter(child => !child[1].includes('#'));
        return pages.length ? {text, url, children: pages.map(SearchBox.menu)} : {text, url};
    }
}

function init_search() {
    const results = document.getElementById('MSearchResultsWindow');
    results.replaceChildren(); // removes Doxygen's frame
    // Makes the switch between light and dark usable with the keyboard.
    window.addEventListener('load', () => {
        const toggle = document.querySelector('doxygen-awesome-dark-mode-toggle');
        toggle.tabIndex = 0;
        toggle.setAttribute('role', 'button');
        toggle.addEventListener('keydown', event => { if (event.key === 'Enter') toggle.click(); });
    });
    document.addEventListener('input', event => { if (event.target.id === 'MSearchField') find(event.target.value); });
    document.addEventListener('click', event => {
        if (!event.target.closest('#MSearchResultsWindow, #MSearchBox')) close();
    });
    document.addEventListener('keydown', event => {
        const field = document.getElementById('MSearchField');
        const links = [...results.querySelectorAll('a')];
        const place = links.indexOf(document.activeElement);
        const inside = place >= 0 || document.activeElement === field;
        if (event.key === '/' && !inside) field.focus();
        else if (!inside) return;
        else if (event.key === 'Escape') close();
        else if (event.key === 'ArrowDown') links[Math.min(place + 1, links.length - 1)]?.focus();
        else if (event.key === 'ArrowUp') (links[place - 1] ?? field).focus();
        else if (event.key === 'Enter' && place < 0) links[0]?.click();
        else return;
        event.preventDefault();
    });
}

function open(field) {
    if (!field.placeholder) close(); // Doxygen has written "Search" into the field
    if (SearchBox.loading) return;
    SearchBox.loading = true;
    const script = document.createElement('script');
    script.src = SearchBox.folder + '/searchdata.js';
    script.onload = () => { build(); find(field.value); };
    document.head.append(script);
}

function close() {
    document.getElementById('MSearchResultsWindow').replaceChildren();
    const field = document.getElementById('MSearchField');
    field.value = '';
    field.placeholder = 'Search';
    field.setAttribute('aria-label', 'Search the guide and the reference');
}

// Pages that readers need less often, or more often, than others.
const weights = {'contributing.html': 0.3, 'architecture.html': 0.3, 'changelog.html': 0.3, 'more-devices.html': 0.6,
                 'codes.html': 2, 'codes.html#codes-the-codes-by-number': 5, 'walking.html': 2, 'messages.html': 4};
const weight = url => weights[url] ?? weights[url.replace(/#.*/, '')] ??
    (/^struct/.test(url) ? 0.4 : /^(class|group)/.test(url) ? 0.8 : 1);
// Words that newcomers type and the pages do not use.
const synonyms = {concurrency: 'thread', injection: 'untrusted', license: 'licence', multithreading: 'thread',
                  precision: 'digits', raspberry: 'device', retry: 'wait', timestamp: 'datetimenow', tutorial: 'started',
                  unicode: 'utf', upgrade: 'migration', windows: 'linux'};
const humps = text => text.replace(/([a-z0-9])([A-Z])/g, '$1 $2');

function build() {
    lunr.tokenizer.separator = /[^\p{L}\p{N}]+/u;
    SearchBox.index = lunr(function() {
        this.field('section', {boost: 8});
        this.field('page', {boost: 3});
        this.field('text');
        searchData.forEach(([url, page, section, text], id) =>
            this.add({id, page, section: `${section || page} ${humps(section || page)}`, text},
                     {boost: weight(url)}));
    });
}

// The best places for the typed text. A place with the exact text usually comes before places with some of its words.
function places(typed) {
    const words = lunr.tokenizer(typed).map(word => synonyms[word] ?? String(word));
    const found = SearchBox.index.query(query => words.forEach(word => {
        query.term(word, {boost: 10});
        if (word.length > 1 && lunr.stopWordFilter(word)) query.term(word, {boost: 2, wildcard: lunr.Query.wildcard.TRAILING, usePipeline: false});
        if (word.length > 4) query.term(word, {editDistance: 1, usePipeline: false});
    }));
    const plain = text => text.toLowerCase().replace(/\s+/g, ' ').trim();
    const phrase = plain(typed);
    for (const place of found) {
        const [url, page, section, text] = searchData[place.ref].map(plain);
        if (words.length > 1 || /\W/.test(phrase)) {
            if (text.includes(phrase) || section.includes(phrase)) place.score *= 4 * weight(url);
            place.score *= (words.filter(word => `${page} ${section} ${text}`.includes(word)).length / words.length) ** 2;
        }
        if ((section || page) === phrase) place.score *= 4;
    }
    return found.sort((a, b) => b.score - a.score).slice(0, 15).map(place => searchData[place.ref]);
}

function excerpt(text, typed) {
    const words = lunr.tokenizer(typed).map(word => String(word).replace(/(?<=.{4})(ions?|ing|e?s|ed)$/, ''));
    const pattern = new RegExp([typed.trim().replace(/\W/g, '\\$&').replace(/\\?\s+/g, '\\s+'), ...words].join('|'), 'gi');
    const start = Math.max(0, text.search(pattern) - 60);
    const shown = document.createElement('small');
    let end = 0;
    const part = (start ? '...' : '') + text.slice(start, start + 180);
    for (const match of part.matchAll(pattern)) {
        if (!match[0]) continue;
        const mark = document.createElement('mark');
        mark.textContent = match[0];
        shown.append(part.slice(end, match.index), mark);
        end = match.index + match[0].length;
    }
    shown.append(part.slice(end));
    return shown;
}

function find(typed) {
    if (!SearchBox.index) return;
    const found = typed.trim() ? places(typed) : [];
    document.getElementById('MSearchResultsWindow').replaceChildren(...found.map(([url, page, section, text]) => {
        const link = document.createElement('a');
        link.href = SearchBox.folder + '/../' + url;
        const where = document.createElement('b');
        where.textContent = section ? `${page}: ${section}` : page;
        link.append(where, excerpt(text, typed));
        return link;
    }), ...(typed.trim() && !found.length ? ['Nothing found'] : []));
}
