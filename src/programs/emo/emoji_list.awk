# Unicode's emoji-test.txt as the short list inside the program. A line for each group, "=NAME", and after it one for each of
# its emoji: the emoji, its name, and where it has skin tones itself in the lightest one; or "+" for two people of different
# tones. LC_ALL=C, so that a character is its bytes.
BEGIN { FS = ";" }
/^# group: / { group = substr($0, 10); next }
/; fully-qualified / {
    text = substr($0, index($0, "#") + 2)
    emoji = substr(text, 1, index(text, " ") - 1)
    name = substr(text, length(emoji) + 2)
    name = substr(name, index(name, " ") + 1)
    plain = $1
    gsub(/ *(FE0F|1F3F[BCDEF])/, "", plain)
    gsub(/ +/, " ", plain)
    tones = $1
    gsub(/1F3F[^BCDEF]/, "", tones)
    different = 0
    for (tone = 1; tone <= 5; ++tone) different += index(tones, "1F3F" substr("BCDEF", tone, 1)) > 0
    if (different == 1) {
        if (index(tones, "1F3FB")) toned[plain] = emoji
        next
    }
    if (group != written) line[++count] = "=" (written = group)
    line[++count] = emoji "\t" name "\t" (different > 1 ? "+" : "")
    if (different == 0) base[count] = plain
}
END {
    for (i = 1; i <= count; ++i) print line[i] ((i in base) && (base[i] in toned) ? toned[base[i]] : "")
}
