// The parser's set-up, its first pass (definitions out, lines normalised) and
// the two entry points. Block parsing is in document_block.cpp, inline
// parsing in document_inline.cpp.
#include "hoedown/document_internal.h"

#include <cassert>
#include <cstdlib>
#include <cstring>
#include <new>

using namespace hoedown_detail;

// ---------------------------------------------------------------------------
// Pools and frames

namespace hoedown_detail {

hoedown_buffer *newbuf(hoedown_document *doc, int type)
{
    static const size_t units[2] = {256, 64};
    hoedown_stack *pool = &doc->work_bufs[type];
    hoedown_buffer *work;
    if (pool->size < pool->asize && pool->item[pool->size] != nullptr) {
        work = static_cast<hoedown_buffer *>(pool->item[pool->size++]);
        work->size = 0;
    } else {
        work = hoedown_buffer_new(units[type]);
        hoedown_stack_push(pool, work);
    }
    return work;
}

void popbuf(hoedown_document *doc, int type)
{
    assert(doc->work_bufs[type].size > 0);
    doc->work_bufs[type].size--;
}

void put_plain(hoedown_buffer *ob, hoedown_document *doc, const uint8_t *data, size_t size)
{
    if (!size)
        return;
    if (doc->md.plain_text) {
        const hoedown_buffer text = view(data, size);
        doc->md.plain_text(ob, &text, &doc->data);
    } else {
        hoedown_buffer_put(ob, data, size);
    }
}

void inline_frame::reset(const uint8_t *b, size_t s)
{
    base = b;
    size = s;
    brackets_ready = runs_ready = regions_ready = false;
    brackets.clear();
    runs.clear();
    regions.clear();
    for (auto &row : closers)
        for (auto &c : row)
            c = {kNone, kNone};
    for (size_t &f : fail)
        f = kNone;
    quote_fail_from = kNone;
    quote_fail_len = 0;
}

void inline_frame::release()
{
    brackets.release();
    runs.release();
    scratch.release();
    regions.release();
}

void id_buckets::reset()
{
    heads.clear();
    for (int b = 0; b < 8; ++b)
        heads.push(0);
}

const link_ref *find_link_ref(hoedown_document *doc, const uint8_t *id, size_t size)
{
    return doc->ref_buckets.find(doc->refs, hash_id(id, size));
}

footnote_def *find_footnote(hoedown_document *doc, const uint8_t *id, size_t size)
{
    return doc->fn_buckets.find(doc->fn_found, hash_id(id, size));
}

} // namespace hoedown_detail

// ---------------------------------------------------------------------------
// First pass: raw lines, which may end in LF, CR or CR LF.

namespace {

struct raw_line {
    size_t eol;  // offset of the line end (or size)
    size_t next; // offset of the next line
};

raw_line raw_line_at(const uint8_t *data, size_t beg, size_t size, bool has_cr)
{
    size_t eol;
    if (!has_cr) {
        const uint8_t *nl = hoedown_find_byte(data + beg, size - beg, '\n');
        eol = nl ? size_t(nl - data) : size;
        return {eol, eol < size ? eol + 1 : size};
    }
    eol = beg;
    while (eol < size && data[eol] != '\n' && data[eol] != '\r')
        ++eol;
    size_t next = eol;
    if (next < size) {
        if (data[next] == '\r' && next + 1 < size && data[next + 1] == '\n')
            next += 2;
        else
            next += 1;
    }
    return {eol, next};
}

// Appends a line with tabs expanded to the next multiple of 4 columns, where
// a column is a UTF-8 character (continuation bytes take none), and a newline.
void copy_line(hoedown_buffer *ob, const uint8_t *line, size_t size)
{
    const void *tab = memchr(line, '\t', size);
    if (!tab) {
        hoedown_buffer_grow(ob, ob->size + size + 1);
        memcpy(ob->data + ob->size, line, size);
        ob->size += size;
        ob->data[ob->size++] = '\n';
        return;
    }
    size_t i = 0, col = 0;
    while (i < size) {
        size_t org = i;
        while (i < size && line[i] != '\t') {
            if ((line[i] & 0xC0) != 0x80)
                ++col;
            ++i;
        }
        hoedown_buffer_put(ob, line + org, i - org);
        if (i >= size)
            break;
        do {
            hoedown_buffer_putc(ob, ' ');
            ++col;
        } while (col % 4);
        ++i;
    }
    hoedown_buffer_putc(ob, '\n');
}

bool is_blank_raw(const uint8_t *data, size_t beg, size_t eol)
{
    for (size_t i = beg; i < eol; ++i) {
        if (data[i] != ' ' && data[i] != '\t')
            return false;
    }
    return true;
}

// Up to 3 spaces at the start of a raw line; returns the offset after them.
size_t skip_indent3(const uint8_t *data, size_t beg, size_t eol)
{
    size_t i = beg;
    while (i < eol && i - beg < 3 && data[i] == ' ')
        ++i;
    return i;
}

// The label of a definition from data[i] (after its '['): a non-empty id up
// to ']' on the line, then ':' and spaces. Returns the offset after them, or
// 0 when this is no definition.
size_t def_label(const uint8_t *data, size_t i, size_t eol, size_t *id_b, size_t *id_e)
{
    *id_b = i;
    while (i < eol && data[i] != ']')
        ++i;
    if (i >= eol || i == *id_b)
        return 0;
    *id_e = i++;
    if (i >= eol || data[i] != ':')
        return 0;
    ++i;
    while (i < eol && (data[i] == ' ' || data[i] == '\t'))
        ++i;
    return i;
}

// A link title from data[t] (an opening '"', '\'' or '(') to the last
// matching closer of the line, which only spaces may follow.
bool parse_title(const uint8_t *data, size_t t, size_t eol, size_t *tb, size_t *te)
{
    const uint8_t close = data[t] == '(' ? ')' : data[t];
    size_t k = eol;
    while (k > t + 1 && (data[k - 1] == ' ' || data[k - 1] == '\t'))
        --k;
    if (k <= t + 1 || data[k - 1] != close)
        return false;
    *tb = t + 1;
    *te = k - 1;
    return true;
}

// A link reference definition at `beg`; returns the offset after it, or 0.
size_t take_link_ref(hoedown_document *doc, const uint8_t *data, size_t beg, size_t size, bool has_cr)
{
    const raw_line first = raw_line_at(data, beg, size, has_cr);
    const size_t lead = skip_indent3(data, beg, first.eol);
    if (lead >= first.eol || data[lead] != '[')
        return 0;
    size_t id_b, id_e;
    size_t i = def_label(data, lead + 1, first.eol, &id_b, &id_e);
    if (!i)
        return 0;
    raw_line cur = first;
    if (i >= first.eol) {
        // At most one newline between the colon and the link.
        if (first.next >= size)
            return 0;
        i = first.next;
        cur = raw_line_at(data, i, size, has_cr);
        while (i < cur.eol && (data[i] == ' ' || data[i] == '\t'))
            ++i;
        if (i >= cur.eol)
            return 0;
    }
    const bool angled = data[i] == '<';
    if (angled)
        ++i;
    const size_t link_b = i;
    while (i < cur.eol && data[i] != ' ' && data[i] != '\t')
        ++i;
    size_t link_e = i;
    if (angled && link_e > link_b && data[link_e - 1] == '>')
        --link_e;
    if (link_e == link_b)
        return 0;
    while (i < cur.eol && (data[i] == ' ' || data[i] == '\t'))
        ++i;

    size_t title_b = 0, title_e = 0, end = cur.next;
    bool has_title = false;
    if (i < cur.eol) {
        if (data[i] != '"' && data[i] != '\'' && data[i] != '(')
            return 0;
        if (!parse_title(data, i, cur.eol, &title_b, &title_e))
            return 0;
        has_title = true;
    } else if (cur.next < size) {
        // A title may stand alone on the next line.
        const raw_line nl = raw_line_at(data, cur.next, size, has_cr);
        size_t j = cur.next;
        while (j < nl.eol && (data[j] == ' ' || data[j] == '\t'))
            ++j;
        if (j < nl.eol && (data[j] == '"' || data[j] == '\'' || data[j] == '(') &&
            parse_title(data, j, nl.eol, &title_b, &title_e)) {
            has_title = true;
            end = nl.next;
        }
    }

    // The first definition of an id wins.
    if (!find_link_ref(doc, data + id_b, id_e - id_b)) {
        link_ref ref{};
        ref.id = hash_id(data + id_b, id_e - id_b);
        ref.link_off = doc->defs.size;
        ref.link_len = link_e - link_b;
        hoedown_buffer_put(&doc->defs, data + link_b, link_e - link_b);
        ref.has_title = has_title;
        ref.title_off = doc->defs.size;
        ref.title_len = has_title ? title_e - title_b : 0;
        if (has_title)
            hoedown_buffer_put(&doc->defs, data + title_b, title_e - title_b);
        doc->refs.push(ref);
        doc->ref_buckets.add(doc->refs);
    }
    return end;
}

// A footnote definition at `beg`; returns the offset after it, or 0. Its
// body is normalised into the definition arena.
size_t take_footnote_def(hoedown_document *doc, const uint8_t *data, size_t beg, size_t size, bool has_cr)
{
    const raw_line first = raw_line_at(data, beg, size, has_cr);
    const size_t lead = skip_indent3(data, beg, first.eol);
    if (lead + 1 >= first.eol || data[lead] != '[' || data[lead + 1] != '^')
        return 0;
    size_t id_b, id_e;
    const size_t i = def_label(data, lead + 2, first.eol, &id_b, &id_e);
    if (!i)
        return 0;

    footnote_def fn{};
    fn.id = hash_id(data + id_b, id_e - id_b);
    fn.off = doc->defs.size;
    copy_line(&doc->defs, data + i, first.eol - i);

    // Following lines belong to it while they are blank or indented; blank
    // lines count only when an indented line follows them, so that the text
    // after the definition keeps its separation.
    size_t cur = first.next, end = first.next, blanks = 0;
    while (cur < size) {
        const raw_line line = raw_line_at(data, cur, size, has_cr);
        if (is_blank_raw(data, cur, line.eol)) {
            ++blanks;
            cur = line.next;
            continue;
        }
        size_t ind = 0;
        if (data[cur] == '\t') {
            ind = 1;
        } else {
            while (ind < 4 && cur + ind < line.eol && data[cur + ind] == ' ')
                ++ind;
        }
        if (ind == 0)
            break;
        for (; blanks; --blanks)
            hoedown_buffer_putc(&doc->defs, '\n');
        copy_line(&doc->defs, data + cur + ind, line.eol - cur - ind);
        cur = end = line.next;
    }
    fn.len = doc->defs.size - fn.off;
    // The first definition of an id wins; a later one is consumed unseen.
    if (!doc->fn_buckets.find(doc->fn_found, fn.id)) {
        doc->fn_found.push(fn);
        doc->fn_buckets.add(doc->fn_found);
    }
    return end;
}

void reset_definitions(hoedown_document *doc)
{
    doc->refs.clear();
    doc->ref_buckets.reset();
    doc->fn_found.clear();
    doc->fn_buckets.reset();
    doc->fn_used.clear();
    doc->defs.size = 0;
    doc->text.size = 0;
    doc->in_link_body = 0;
    doc->frame_depth = 0;
}

// Both pools must be back at size 0 after a render. A violation is a parser
// bug; debug builds stop at the assertion, release builds drop the stale
// entries so that the next render starts clean.
void check_pools(hoedown_document *doc)
{
    assert(doc->work_bufs[BUFFER_SPAN].size == 0);
    assert(doc->work_bufs[BUFFER_BLOCK].size == 0);
    doc->work_bufs[BUFFER_SPAN].size = 0;
    doc->work_bufs[BUFFER_BLOCK].size = 0;
}

void render_footnotes(hoedown_buffer *ob, hoedown_document *doc)
{
    hoedown_buffer *work = newbuf(doc, BUFFER_BLOCK);
    // A footnote may use another for the first time: the list grows while
    // it is walked, and every footnote is rendered once.
    for (size_t k = 0; k < doc->fn_used.size; ++k) {
        const footnote_def fn = doc->fn_found[doc->fn_used[k]];
        hoedown_buffer *body = newbuf(doc, BUFFER_BLOCK);
        parse_block(body, doc, doc->defs.data + fn.off, fn.len);
        if (doc->md.footnote_definition)
            doc->md.footnote_definition(work, body, fn.num, &doc->data);
        popbuf(doc, BUFFER_BLOCK);
    }
    if (doc->md.footnotes)
        doc->md.footnotes(ob, work, &doc->data);
    popbuf(doc, BUFFER_BLOCK);
}

} // namespace

// ---------------------------------------------------------------------------
// Public interface

hoedown_document *hoedown_document_new(const hoedown_renderer *renderer, unsigned int extensions,
                                       size_t max_nesting)
{
    assert(max_nesting > 0 && renderer);
    auto *doc = new (hoedown_calloc(1, sizeof(hoedown_document))) hoedown_document();
    if (renderer)
        doc->md = *renderer;
    doc->data.opaque = doc->md.opaque;
    // A zero limit would render nothing at all; one level is the least that
    // still renders top-level blocks.
    doc->max_nesting = max_nesting ? max_nesting : 1;
    doc->ext_flags = extensions;
    hoedown_buffer_init(&doc->defs, 256);
    hoedown_buffer_init(&doc->text, 1024);
    hoedown_stack_init(&doc->work_bufs[BUFFER_BLOCK], 4);
    hoedown_stack_init(&doc->work_bufs[BUFFER_SPAN], 8);

    uint8_t *ac = doc->active_char;
    const hoedown_renderer &md = doc->md;
    if (md.emphasis || md.strong_span || md.strong_emphasis_span) {
        ac['*'] = MD_CHAR_EMPHASIS;
        ac['_'] = MD_CHAR_EMPHASIS;
        if (extensions & HOEDOWN_EXT_STRIKETHROUGH)
            ac['~'] = MD_CHAR_EMPHASIS;
        if (extensions & HOEDOWN_EXT_HIGHLIGHT)
            ac['='] = MD_CHAR_EMPHASIS;
    }
    if ((extensions & HOEDOWN_EXT_UNDERLINE) && md.underline)
        ac['_'] = MD_CHAR_EMPHASIS;
    if (md.code_span)
        ac['`'] = MD_CHAR_CODESPAN;
    if (md.line_break)
        ac['\n'] = MD_CHAR_LINEBREAK;
    if (md.image || md.link || md.footnotes || md.footnote_reference) {
        ac['['] = MD_CHAR_LINK;
        ac['!'] = MD_CHAR_IMAGE;
    }
    ac['<'] = MD_CHAR_LANGLE;
    ac['\\'] = MD_CHAR_ESCAPE;
    ac['&'] = MD_CHAR_ENTITY;
    if (extensions & HOEDOWN_EXT_AUTOLINK) {
        ac[':'] = MD_CHAR_AUTOLINK_URL;
        ac['@'] = MD_CHAR_AUTOLINK_EMAIL;
        ac['w'] = MD_CHAR_AUTOLINK_WWW;
    }
    if (extensions & HOEDOWN_EXT_SUPERSCRIPT)
        ac['^'] = MD_CHAR_SUPERSCRIPT;
    if (extensions & HOEDOWN_EXT_QUOTE)
        ac['"'] = MD_CHAR_QUOTE;
    if (extensions & HOEDOWN_EXT_MATH)
        ac['$'] = MD_CHAR_MATH;
    return doc;
}

namespace {

// The first pass: takes the definitions out and normalises the lines. The
// text to parse goes to doc->text, or, with `in_place`, stays in `data`,
// which is compacted where it lies when no line needs normalising; returns
// the text and its size.
uint8_t *first_pass(hoedown_document *doc, uint8_t *in_place, const uint8_t *data, size_t size, size_t *text_size)
{
    size_t beg = 0;
    if (size >= 3 && data[0] == 0xEF && data[1] == 0xBB && data[2] == 0xBF)
        beg = 3;
    const bool has_cr = size > beg && memchr(data + beg, '\r', size - beg) != nullptr;
    const bool has_tab = size > beg && memchr(data + beg, '\t', size - beg) != nullptr;
    // Without CR and tabs, lines are taken as they are: runs of them go in
    // one piece, cut only where a definition is taken out.
    const bool verbatim = !has_cr && !has_tab;
    if (!verbatim)
        in_place = nullptr;
    if (!in_place)
        hoedown_buffer_grow(&doc->text, size + size / 16 + 2);
    size_t run_b = beg, w = 0;
    const auto flush_run = [&](size_t run_e) {
        if (in_place) {
            memmove(in_place + w, data + run_b, run_e - run_b);
            w += run_e - run_b;
        } else {
            hoedown_buffer_put(&doc->text, data + run_b, run_e - run_b);
        }
    };
    const bool fenced = doc->ext_flags & HOEDOWN_EXT_FENCED_CODE;
    const bool footnotes = doc->ext_flags & HOEDOWN_EXT_FOOTNOTES;
    bool in_fence = false;

    while (beg < size) {
        const raw_line line = raw_line_at(data, beg, size, has_cr);
        const size_t lead = skip_indent3(data, beg, line.eol);
        if (lead < line.eol) {
            const uint8_t c = data[lead];
            if (fenced && (c == '`' || c == '~')) {
                // Only the line's start counts here, so a closing fence
                // need not match its opening one.
                fence_info fi;
                if (is_codefence(data + beg, line.eol - beg, false, &fi))
                    in_fence = !in_fence;
            } else if (c == '[' && !in_fence) {
                size_t end = 0;
                if (footnotes)
                    end = take_footnote_def(doc, data, beg, size, has_cr);
                if (!end)
                    end = take_link_ref(doc, data, beg, size, has_cr);
                if (end) {
                    if (verbatim)
                        flush_run(beg);
                    beg = run_b = end;
                    continue;
                }
            }
        }
        if (!verbatim)
            copy_line(&doc->text, data + beg, line.eol - beg);
        beg = line.next;
    }
    if (verbatim)
        flush_run(size);
    if (in_place) {
        // The caller's text ends in a newline, and compacting kept it.
        *text_size = w;
        return in_place;
    }
    // Every line ends in a newline, so block parsing always sees a text
    // that ends in one.
    if (doc->text.size && doc->text.data[doc->text.size - 1] != '\n')
        hoedown_buffer_putc(&doc->text, '\n');
    *text_size = doc->text.size;
    return doc->text.data;
}

void render_text(hoedown_document *doc, hoedown_buffer *ob, uint8_t *text, size_t size)
{
    if (doc->md.page_start)
        doc->md.page_start(ob, 0, &doc->data);
    parse_block(ob, doc, text, size);
    if (doc->fn_used.size)
        render_footnotes(ob, doc);
    if (doc->md.page_end)
        doc->md.page_end(ob, 0, &doc->data);
    check_pools(doc);
}

} // namespace

void hoedown_document_render(hoedown_document *doc, hoedown_buffer *ob, const uint8_t *data, size_t size)
{
    if (!data)
        size = 0;
    reset_definitions(doc);
    size_t text_size = 0;
    uint8_t *text = first_pass(doc, nullptr, data, size, &text_size);
    render_text(doc, ob, text, text_size);
}

void hoedown_document_render_in_place(hoedown_document *doc, hoedown_buffer *ob, uint8_t *data, size_t size)
{
    if (!data)
        size = 0;
    assert(size == 0 || data[size - 1] == '\n');
    reset_definitions(doc);
    size_t text_size = 0;
    uint8_t *text = first_pass(doc, data, data, size, &text_size);
    render_text(doc, ob, text, text_size);
}

void hoedown_document_render_inline(hoedown_document *doc, hoedown_buffer *ob, const uint8_t *data,
                                    size_t size)
{
    if (!data)
        size = 0;
    reset_definitions(doc);
    hoedown_buffer_grow(&doc->text, size + size / 16 + 2);
    size_t beg = 0;
    if (size >= 3 && data[0] == 0xEF && data[1] == 0xBB && data[2] == 0xBF)
        beg = 3;
    const bool has_cr = size > beg && memchr(data + beg, '\r', size - beg) != nullptr;
    while (beg < size) {
        const raw_line line = raw_line_at(data, beg, size, has_cr);
        copy_line(&doc->text, data + beg, line.eol - beg);
        // Inline text gets no newline it did not have.
        if (line.eol == size)
            doc->text.size--;
        beg = line.next;
    }
    if (doc->md.page_start)
        doc->md.page_start(ob, 1, &doc->data);
    parse_inline(ob, doc, doc->text.data, doc->text.size);
    if (doc->md.page_end)
        doc->md.page_end(ob, 1, &doc->data);
    check_pools(doc);
}

void hoedown_document_free(hoedown_document *doc)
{
    if (!doc)
        return;
    for (int t = 0; t < 2; ++t) {
        hoedown_stack *pool = &doc->work_bufs[t];
        for (size_t i = 0; i < pool->asize; ++i)
            hoedown_buffer_free(static_cast<hoedown_buffer *>(pool->item[i]));
        hoedown_stack_uninit(pool);
    }
    for (size_t i = 0; i < doc->frames.size; ++i) {
        doc->frames[i]->release();
        doc->frames[i]->~inline_frame();
        free(doc->frames[i]);
    }
    doc->frames.release();
    doc->row_frame.release();
    doc->table_aligns.release();
    doc->table_cells.release();
    doc->refs.release();
    doc->ref_buckets.heads.release();
    doc->fn_found.release();
    doc->fn_buckets.heads.release();
    doc->fn_used.release();
    hoedown_buffer_uninit(&doc->defs);
    hoedown_buffer_uninit(&doc->text);
    doc->~hoedown_document();
    free(doc);
}
