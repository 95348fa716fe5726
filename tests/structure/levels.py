"""Which instruction-set extension an instruction needs, told from its AT&T disassembly.

The legacy encodings below SSE3 and general-purpose code are the baseline and need nothing. TZCNT counts as baseline:
processors without BMI1 run its encoding as BSF, and compilers emit it where both give the same.
"""
import re

import binary

# What a compiler's flag lets code use, each with what it implies: every processor with AVX has SSE4.2 and POPCNT.
IMPLIED = {"sse3": (), "ssse3": ("sse3",), "sse4.1": ("ssse3",), "sse4.2": ("sse4.1",), "popcnt": (), "movbe": (),
           "avx": ("sse4.2", "popcnt"), "avx2": ("avx",), "fma": ("avx",), "bmi": (), "bmi2": ()}


def offered(extension):
    return {extension}.union(*(offered(implied) for implied in IMPLIED[extension]))


# What each slot's code may use beyond the baseline.
ALLOWED = {slot: {"bmi1" if e == "bmi" else e for flag in flags for e in offered(flag.removeprefix("-m"))}
           for slot, (_, flags) in binary.slots().items()}


def pattern(words):
    return re.compile("(?:" + "|".join(words.split()) + r")\Z")


# Legacy encodings and general-purpose instructions, by mnemonic.
PLAIN = [
    ("sse3", pattern("addsubp[sd] haddp[sd] hsubp[sd] lddqu movddup movshdup movsldup fisttp\\w* monitor mwait")),
    ("ssse3", pattern("psign[bwd] pabs[bwd] palignr pshufb pmulhrsw pmaddubsw ph(?:add|sub)(?:w|d|sw)")),
    ("movbe", pattern("movbe[wlq]?")),
    ("sse4.1", pattern(
        "blendp[sd] blendvp[sd] dpp[sd] extractps insertps movntdqa mpsadbw packusdw pblendvb pblendw pcmpeqq "
        "pextr[bdq] phminposuw pinsr[bdq] pmaxs[bd] pmaxu[wd] pmins[bd] pminu[wd] pmov[sz]x\\w+ pmuldq pmulld ptest "
        "round[ps][sd]")),
    ("sse4.2", pattern("pcmp[ei]str[im] pcmpgtq crc32[bwlq]?")),
    ("popcnt", pattern("popcnt[wlq]?")),
    ("lzcnt", pattern("lzcnt[wlq]?")),
    ("bmi1", pattern("andn[lq] bextr[lq] blsi[lq] blsmsk[lq] blsr[lq]")),
    ("bmi2", pattern("bzhi[lq] mulx[lq] pdep[lq] pext[lq] rorx[lq] sarx[lq] shlx[lq] shrx[lq]")),
    ("aes", pattern("aes\\w+")),
    ("pclmulqdq", pattern("pclmul\\w+")),
    ("sha", pattern("sha1\\w+ sha256\\w+")),
    ("gfni", pattern("gf2p8\\w+")),
    ("sse4a", pattern("extrq insertq movnts[sd]")),
    ("adx", pattern("adcx[lq] adox[lq]")),
    ("rdrand", pattern("rdrand[wlq]? rdseed[wlq]?")),
    ("tbm", pattern("blcfill[lq] blci[lq] blcic[lq] blcmsk[lq] blcs[lq] blsfill[lq] blsic[lq] t1mskc[lq] tzmsk[lq]")),
]

# VEX encodings that are more than AVX, with any operands.
VECTOR = [
    ("fma", pattern("vfn?m(?:add|sub)\\w+")),
    ("f16c", pattern("vcvtph2ps vcvtps2ph")),
    ("aes", pattern("vaes\\w+")),
    ("pclmulqdq", pattern("vpclmul\\w+")),
    ("gfni", pattern("vgf2p8\\w+")),
    ("avx-vnni", pattern("vpdp\\w+")),
    ("xop", pattern("vfrcz\\w+ vpcmov vphadd[bwd]d?q vphaddu\\w+ vpmacs\\w+ vpmadcs\\w+ vpperm vprot\\w+ vpsh[al][bwdq] vpcom\\w+")),
    ("avx2", pattern(
        "vpbroadcast[bwdq] v(?:broadcast|insert|extract)i128 vperm2i128 vperm[dq] vpermp[sd] vps[lr]lv[dq] vpsravd "
        "vpmaskmov[dq] vp?gather\\w+ vpblendd")),
]

# Names with an integer's vp that AVX already has on 256 bits.
AVX_INTEGER_256 = pattern("vptest vpermilp[sd] vperm2f128")


def extension(mnemonic, operands):
    """The extension that an instruction needs, or None for the baseline."""
    if re.search(r"%zmm|%[xy]mm(?:1[6-9]|2\d|3[01])\b|%k[0-7]\b", operands) or mnemonic.startswith("{evex"):
        return "avx-512"
    if mnemonic == "(bad)" or mnemonic == "<unknown>":
        return "unknown"
    if mnemonic.startswith("v") and not re.match(r"ver[rw]|vm(?:call|clear|func|launch|mcall|ptr|read|resume|write|xo|load|run|save)",
                                                 mnemonic):
        for name, matches in VECTOR:
            if matches.match(mnemonic):
                return name
        wide = "%ymm" in operands
        if wide and re.match(r"vp|vmpsadbw|vmovntdqa", mnemonic) and not AVX_INTEGER_256.match(mnemonic):
            return "avx2"
        if mnemonic in ("vbroadcastss", "vbroadcastsd") and "(" not in operands and operands.startswith("%"):
            return "avx2"
        return "avx"
    if mnemonic == "pextrw" and operands.endswith(")"):
        return "sse4.1"
    for name, matches in PLAIN:
        if matches.match(mnemonic):
            return name
    return None
