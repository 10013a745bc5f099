#!/bin/bash
# Builds the site (the guide and the reference of the public headers) in build/reference/html; index.html is the first
# page. Fails if anything public has no comment, or if a page or comment refers to a name that does not exist.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

accept -- "$@"

site=build/reference
html=$site/html
pictures=$site/pictures

# The pictures are embedded in their pages, so that they follow the page's light or dark colours.
draw()
{
    local picture svg
    for picture in docs/reference/*.dot; do
        svg=$(dot -Tsvg "$picture") || return
        printf '<div class="picture">\n<svg %s\n</div>\n' "${svg#*<svg }" >"$pictures/$(basename "$picture" .dot).html"
    done
}

# Writes Doxygen's own header, with the scripts of doxygen-awesome-css added.
write_header()
{
    local name scripts=''
    for name in darkmode-toggle fragment-copy-button paragraph-link interactive-toc; do
        scripts+="<script src=\"\$relpath^doxygen-awesome-$name.js\"></script>"
    done
    for name in DarkModeToggle FragmentCopyButton ParagraphLink InteractiveToc; do
        scripts+="<script>DoxygenAwesome$name.init()</script>"
    done
    doxygen -w html "$site/header.html" "$site/footer.html" "$site/style.css" &&
        sed -i "s|</head>|$scripts&|; s|<html |&lang=\"en\" |" "$site/header.html"
}

write_pages()
{
    TKOSQLLITE_VERSION=$(sed -n 's/^ *VERSION \([0-9.]*\)$/\1/p' CMakeLists.txt) doxygen docs/reference/Doxyfile &&
        # Removes the backslash that Doxygen keeps before a bar in a table.
        sed -i '/class="markdownTable/s/\\|/|/g' "$html"/*.html &&
        # Marks where a line may end in the path of a file.
        sed -i 's|\xe2\x80\x8b|<wbr>|g' "$html"/*.html &&
        # Removes the namespace that enumerations have in the navigation tree.
        sed -i 's/"Morvik::sql::/"/' "$html"/group__*.js &&
        cp docs/*/*.svg "$html" &&
        # The menu for telephones has the pages of the navigation tree.
        cat "$html"/{guide,modules,group__*}.js >"$html/menudata.js" &&
        echo 'var menudata = {children: NAVTREE[0][2].map(SearchBox.menu)};' >>"$html/menudata.js"
}

write_search()
{
    # No page links to these indices, which the search replaces.
    rm -f "$html"/{*-members,dir_*,functions*,hierarchy,namespacemembers*,pages}.html "$html"/search/*.{js,html}
    cat /usr/share/javascript/lunr/lunr.min.js docs/reference/search.js >"$html/search/search.js" &&
        docs/reference/search_data.py "$html" >"$html/search/searchdata.js"
}

scripts/install-dependencies.sh reference
rm -rf "$site"
mkdir -p "$pictures"
step "Drawing the pictures of the reference" draw
step "Preparing the header" quietly write_header
step "Writing the site" quietly write_pages
step "Writing the search" write_search
