// A library with every flaw that the checks of a built library look for, so that each check is seen to fail.

// Exported, and not of the library's namespace.
extern "C" [[gnu::noinline]] int StrayFunction()
{
    return 1;
}

// Set when the library is loaded.
int strayStart = StrayFunction();

// An address inside the code, which the loader must write there.
#if defined(__LP64__)
__asm__(".pushsection .text\n.balign 8\n.quad StrayFunction\n.popsection\n");
#else
__asm__(".pushsection .text\n.balign 4\n.long StrayFunction\n.popsection\n");
#endif
