# Completion of the zaltag program for bash.

_zaltag_options() {  # COMMAND [COMMAND-BELOW]
    local collections="--rekordbox --traktor --boot-volume --map"
    case "$*" in
        show) echo "--all --json" ;;
        "comments list" | "artwork list") echo "--json" ;;
        set) echo "--strip-v1" ;;
        "cues list") echo "--from --json $collections" ;;
        "cues set") echo "--to --clear --rewrite-all $collections" ;;
        "artwork export") echo "--out" ;;
        "artwork replace" | "artwork backup") echo "--image" ;;
        scan) echo "--jobs --json" ;;
        sync) echo "--from --to --all --relocate --keep-times --only --merge --as-memory --no-decoder-offset --offset --force-dates --in-place --dry-run --verbose --json --clear-empty --no-backup --output --rewrite-all --jobs $collections" ;;
        undo) echo "--list" ;;
        report) echo "--output --jobs $collections" ;;
        rekordbox\ * | traktor\ *) echo "--json $collections" ;;
        versions) echo "--service --ca-file --json" ;;
    esac
    echo "--help --version"
}

_zaltag_below() {  # COMMAND: the commands below it
    case $1 in
        "") echo "show set record cues comments artwork copy dump scan rekordbox traktor sync undo report versions" ;;
        cues) echo "list set" ;;
        comments) echo "list set prune strip-v1" ;;
        artwork) echo "list export replace backup restore clear" ;;
        rekordbox | traktor) echo "info tracks track playlists" ;;
    esac
}

_zaltag_names() {  # COMMAND [COMMAND-BELOW]: what may stand before "="
    case "$*" in
        set)
            echo "artist= album= title= year= genre= comment= tempo= initialKey= energyLevel= grouping= modifiedBy="
            echo "TIT1Grouping= GRP1Grouping="
            echo "infoTitle= infoArtist= infoAlbum= infoGenre= infoComment= infoYear="
            ;;
        record) echo "zalBeatGrid= zalCuePoints= zalEnergy= zalKey= zalVelvetCascade=" ;;
        "comments set") echo "comment=" ;;
    esac
}

_zaltag() {
    local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} i word
    local command=() arguments=0
    COMPREPLY=()

    # bash makes "--from=serato" three words.
    if [[ $current == "=" ]]; then
        current="" && before=${COMP_WORDS[COMP_CWORD - 1]}
    elif [[ $before == "=" ]]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        if [[ $word == -* || $word == "=" ]]; then
            continue
        elif [[ " $(_zaltag_below "${command[0]}") " == *" $word "* && ${#command[@]} -lt 2 && $arguments == 0 ]]; then
            command+=("$word")
        else
            arguments=$((arguments + 1))
        fi
    done

    case $before in
        --from) word="serato zal rekordbox-hot rekordbox-memory traktor" ;;
        --to) word="serato zal rekordbox-hot rekordbox-memory rekordbox traktor" ;;
        --boot-volume | --service | --jobs | -j) word="" ;;
        --rekordbox | --traktor | --image | --ca-file | --out | --output | -o) return ;;  # readline completes files
        *)
            if [[ $current == -* ]]; then
                word=$(_zaltag_options "${command[@]}")
            elif [[ ${#command[@]} -lt 2 && $arguments == 0 && -n $(_zaltag_below "${command[0]}") ]]; then
                word=$(_zaltag_below "${command[0]}")
            elif [[ $arguments -gt 0 && ${COMP_WORDS[COMP_CWORD]} != "=" && ${COMP_WORDS[COMP_CWORD - 1]} != "=" ]]; then
                # Files come first; where no name fits, readline goes on with files.
                word=$(_zaltag_names "${command[@]}")
                mapfile -t COMPREPLY < <(compgen -W "$word" -- "$current")
                [[ ${#COMPREPLY[@]} -gt 0 ]] && compopt -o nospace 2>/dev/null
                return
            else
                return
            fi
            ;;
    esac
    compopt +o default 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -W "$word" -- "$current")
}

complete -o default -F _zaltag zaltag
