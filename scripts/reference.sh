#!/bin/bash
# Builds the reference of the public headers into build/reference/html; index.html is the first page. Fails if anything
# public has no comment, or if a comment refers to a name that does not exist.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

accept -- "$@"

pages=build/reference
pictures=$pages/pictures

# The pictures are embedded in their pages, so that they follow the page's light or dark colours.
draw()
{
    local picture svg
    for picture in docs/reference/*.dot; do
        svg=$(dot -Tsvg "$picture") || return
        {
            echo '<figure class="picture">'
            echo "<svg ${svg#*<svg }"
            echo '</figure>'
        } >"$pictures/$(basename "$picture" .dot).html"
    done
}

write_pages()
{
    doxygen docs/reference/Doxyfile &&
        cp docs/reference/search.css "$pages/html/search/search.css" &&
        # No page links to these indices; the search replaces them.
        rm -f "$pages"/html/{classes,hierarchy,pages,dir_*,functions*,namespacemembers*}.html
}

scripts/install-dependencies.sh reference
rm -rf "$pages"
mkdir -p "$pictures"
step "Drawing the reference's pictures" draw
step "Writing the reference" quietly write_pages
