# Completion of the zaltag program for fish.

# True when the words so far name this command, and the one below it if that is given.
function __zaltag_in
    set -l words (commandline -opc | string match -v -- '-*')
    test "$words[2]" = "$argv[1]"; and begin
        test (count $argv) -eq 1; or contains -- "$words[3]" $argv[2..]
    end
end

# True when the command of this name is there, and none below it yet.
function __zaltag_lacks
    set -l words (commandline -opc | string match -v -- '-*')
    test (count $words) -eq 2; and test "$words[2]" = "$argv[1]"
end

function __zaltag_nothing_yet
    test (count (commandline -opc | string match -v -- '-*')) -eq 1
end

set -l from serato zal rekordbox-hot rekordbox-memory traktor
set -l to serato zal rekordbox-hot rekordbox-memory rekordbox traktor

complete -c zaltag -s h -l help -d 'Print the help and end'
complete -c zaltag -l version -d 'Print the version and end'

complete -c zaltag -f -n __zaltag_nothing_yet -a show -d 'Print every field'
complete -c zaltag -f -n __zaltag_nothing_yet -a set -d 'Set fields'
complete -c zaltag -f -n __zaltag_nothing_yet -a record -d 'Set analysis records'
complete -c zaltag -f -n __zaltag_nothing_yet -a cues -d 'List and set cue points'
complete -c zaltag -f -n __zaltag_nothing_yet -a comments -d 'List, set and clean up comments'
complete -c zaltag -f -n __zaltag_nothing_yet -a artwork -d 'List, export and change pictures'
complete -c zaltag -f -n __zaltag_nothing_yet -a copy -d 'Copy all tags of a file into another'
complete -c zaltag -f -n __zaltag_nothing_yet -a dump -d 'Print a report'
complete -c zaltag -f -n __zaltag_nothing_yet -a scan -d 'Open every file below folders'
complete -c zaltag -f -n __zaltag_nothing_yet -a rekordbox -d 'Read a Rekordbox collection'
complete -c zaltag -f -n __zaltag_nothing_yet -a traktor -d 'Read a Traktor collection'
complete -c zaltag -f -n __zaltag_nothing_yet -a sync -d 'Carry cue points from one program to others'
complete -c zaltag -f -n __zaltag_nothing_yet -a undo -d 'Take back what the last sync wrote into collections'
complete -c zaltag -f -n __zaltag_nothing_yet -a report -d 'Write one page that shows a music folder'
complete -c zaltag -f -n __zaltag_nothing_yet -a versions -d 'Print the newest versions of the algorithms'

complete -c zaltag -f -n '__zaltag_lacks cues' -a 'list set'
complete -c zaltag -f -n '__zaltag_lacks comments' -a 'list set prune strip-v1'
complete -c zaltag -f -n '__zaltag_lacks artwork' -a 'list export replace backup restore clear'
complete -c zaltag -f -n '__zaltag_lacks rekordbox' -a 'info tracks track playlists'
complete -c zaltag -f -n '__zaltag_lacks traktor' -a 'info tracks track playlists'

complete -c zaltag -n '__zaltag_in set' -a 'artist= album= title= year= genre= comment= tempo= initialKey= energyLevel= \
    grouping= modifiedBy= TIT1Grouping= GRP1Grouping= infoTitle= infoArtist= infoAlbum= infoGenre= infoComment= infoYear='
complete -c zaltag -n '__zaltag_in record' -a 'zalBeatGrid= zalCuePoints= zalEnergy= zalKey= zalVelvetCascade='
complete -c zaltag -n '__zaltag_in comments set' -a 'comment='

for command in show 'comments list' 'artwork list' 'cues list' scan sync versions \
        'rekordbox info tracks track playlists' 'traktor info tracks track playlists'
    complete -c zaltag -n "__zaltag_in $command" -l json -d 'Print JSON'
end
for command in 'cues list set' sync report 'rekordbox info tracks track playlists' 'traktor info tracks track playlists'
    complete -c zaltag -n "__zaltag_in $command" -l rekordbox -r -d 'Rekordbox collection'
    complete -c zaltag -n "__zaltag_in $command" -l traktor -r -d 'Traktor collection'
    complete -c zaltag -n "__zaltag_in $command" -l map -x -d 'A folder of the collection that is another one here'
    complete -c zaltag -n "__zaltag_in $command" -l boot-volume -x -d 'Name of the startup volume'
end
for command in 'cues list' sync
    complete -c zaltag -n "__zaltag_in $command" -l from -x -a "$from" -d 'Where the cue points stand'
end
for command in 'cues set' sync
    complete -c zaltag -n "__zaltag_in $command" -l to -x -a "$to" -d 'Where to write them'
    complete -c zaltag -n "__zaltag_in $command" -l rewrite-all -d 'Rewrite every track with cues in a collection'
end
for command in scan sync report
    complete -c zaltag -n "__zaltag_in $command" -s j -l jobs -x -d 'Threads'
end
complete -c zaltag -n '__zaltag_in set' -l strip-v1 -d 'Remove the ID3v1 tag'
complete -c zaltag -n '__zaltag_in cues set' -l clear -d 'Remove the cue points'
complete -c zaltag -n '__zaltag_in artwork export' -l out -r -d 'Where to'
complete -c zaltag -n '__zaltag_in artwork replace backup' -l image -r -d 'Picture'
complete -c zaltag -n '__zaltag_in report' -s o -l output -r -d 'Page to write'
complete -c zaltag -n '__zaltag_in sync' -s n -l dry-run -d 'Only say what would change'
complete -c zaltag -n '__zaltag_in sync' -s v -l verbose -d 'Name what a collection does not hold'
complete -c zaltag -n '__zaltag_in sync' -l all -d 'Every track of the collection'
complete -c zaltag -n '__zaltag_in sync' -l relocate -d 'Find moved files'
complete -c zaltag -n '__zaltag_in sync' -l keep-times -d 'Do not move cue points to the beat grid'
complete -c zaltag -n '__zaltag_in sync' -l only -x -a times -d 'Carry times and names alone'
complete -c zaltag -n '__zaltag_in sync' -l merge -d 'Add what the target lacks'
complete -c zaltag -n '__zaltag_in sync' -l as-memory -d 'Hot cues as memory cues, too'
complete -c zaltag -n '__zaltag_in sync' -l no-decoder-offset -d 'Leave MP3 times as they are'
complete -c zaltag -n '__zaltag_in sync' -l offset -x -d 'Milliseconds, added to every time'
complete -c zaltag -n '__zaltag_in sync' -l force-dates -d 'Write entries without a date'
complete -c zaltag -n '__zaltag_in sync' -l in-place -d 'Change audio files where they stand'
complete -c zaltag -n '__zaltag_in sync' -l no-backup -d 'Make no copy of a collection'
complete -c zaltag -n '__zaltag_in sync' -l output -r -d 'New collection to write'
complete -c zaltag -n '__zaltag_in undo' -l list -d 'Only name the runs'
complete -c zaltag -n '__zaltag_in sync' -l clear-empty -d 'Clear targets where the source has none'
complete -c zaltag -n '__zaltag_in versions' -l service -x -d 'Web service'
complete -c zaltag -n '__zaltag_in versions' -l ca-file -r -d 'Certificate authorities'
for command in show 'rekordbox tracks track' 'traktor tracks track'
    complete -c zaltag -n "__zaltag_in $command" -l all -d 'Everything that is there'
end
