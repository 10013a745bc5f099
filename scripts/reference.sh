#!/bin/bash
# Builds the reference of the public headers into build/reference/html; index.html is where to begin. Fails if anything
# public has no comment, or a comment names something that there is not.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

accept -- "$@"

pages=build/reference
pictures=$pages/pictures

# The pictures become a part of their pages, which colour them: light or dark as everything else.
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
        # Nothing leads to these indices; the search is in their place.
        rm -f "$pages"/html/{classes,hierarchy,pages,dir_*,functions*,namespacemembers*}.html
}

scripts/install-dependencies.sh reference
rm -rf "$pages"
mkdir -p "$pictures"
step "Drawing the reference's pictures" draw
step "Writing the reference" quietly write_pages
