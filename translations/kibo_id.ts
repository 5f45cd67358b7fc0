<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="id">
<context>
    <name>Help</name>
    <message>
        <source>The help is not installed here. It should be in the folder
%1</source>
        <translation>Bantuan tidak terpasang di sini. Seharusnya ada di folder
%1</translation>
    </message>
    <message>
        <source>The help can&apos;t be opened: %1
Its page is the file
%2</source>
        <translation>Bantuan tidak dapat dibuka: %1
Halamannya ialah berkas
%2</translation>
    </message>
</context>
<context>
    <name>Screen</name>
    <message>
        <source>Help</source>
        <translation>Bantuan</translation>
    </message>
    <message>
        <source>The guide&apos;s chapter about this window (F1)</source>
        <translation>Bab panduan tentang jendela ini (F1)</translation>
    </message>
</context>
<context>
    <name>kibo::Banner</name>
    <message>
        <source>What hinders sending or reading</source>
        <translation>Yang menghambat pengiriman atau pembacaan</translation>
    </message>
</context>
<context>
    <name>kibo::ElementScreen</name>
    <message>
        <source>Elements</source>
        <translation>Elemen</translation>
    </message>
    <message>
        <source>Where things are on WhatsApp&apos;s page. Locators that begin with / ( or ./ are XPath, others CSS. Test frames what a box finds on the open page.</source>
        <translation>Letak unsur-unsur di halaman WhatsApp. Pelacak yang diawali / ( atau ./ adalah XPath, selebihnya CSS. Test membingkai apa yang ditemukan isian di halaman yang terbuka.</translation>
    </message>
    <message>
        <source>&amp;Fetch</source>
        <translation>&amp;Ambil</translation>
    </message>
    <message>
        <source>Fill the boxes with the element service&apos;s values</source>
        <translation>Isi semua isian dengan nilai dari layanan elemen</translation>
    </message>
    <message>
        <source>&amp;Upload…</source>
        <translation>&amp;Unggah…</translation>
    </message>
    <message>
        <source>Give the boxes&apos; values to the element service</source>
        <translation>Serahkan nilai isian kepada layanan elemen</translation>
    </message>
    <message>
        <source>Page &amp;report</source>
        <translation>&amp;Laporan halaman</translation>
    </message>
    <message>
        <source>Write the open page&apos;s structure into a file, without its texts</source>
        <translation>Tulis struktur halaman yang terbuka ke sebuah berkas, tanpa teksnya</translation>
    </message>
    <message>
        <source>&amp;Save</source>
        <translation>&amp;Simpan</translation>
    </message>
    <message>
        <source>Store all boxes</source>
        <translation>Simpan semua isian</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Tutup</translation>
    </message>
    <message>
        <source>Close this window</source>
        <translation>Tutup jendela ini</translation>
    </message>
</context>
<context>
    <name>kibo::EmojiPicker</name>
    <message>
        <source>The emoji program did not start: %1</source>
        <translation>Program emoji tidak dapat dimulai: %1</translation>
    </message>
    <message>
        <source>There is no emoji program (emo, on Windows emo.exe) in %1</source>
        <translation>Tidak ada program emoji (emo, di Windows emo.exe) di %1</translation>
    </message>
    <message>
        <source>The emoji program ended with an error. What was inserted before stays.</source>
        <translation>Program emoji berakhir dengan kesalahan. Yang sudah disisipkan tetap ada.</translation>
    </message>
</context>
<context>
    <name>kibo::EmojiWindow</name>
    <message>
        <source>Emoji</source>
        <translation>Emoji</translation>
    </message>
    <message>
        <source>Find by an English name, as “heart” or “thumbs up”</source>
        <translation>Cari dengan nama Inggris, seperti “heart” atau “thumbs up”</translation>
    </message>
    <message>
        <source>Find an emoji</source>
        <translation>Cari emoji</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Salin</translation>
    </message>
    <message>
        <source>&amp;Insert</source>
        <translation>S&amp;isipkan</translation>
    </message>
    <message>
        <source>Put the emoji on the clipboard (Enter)</source>
        <translation>Salin emoji ke papan klip (Enter)</translation>
    </message>
    <message>
        <source>Put the emoji into the message (Enter; with Shift go on)</source>
        <translation>Sisipkan emoji ke pesan (Enter; dengan Shift jendela tetap terbuka)</translation>
    </message>
    <message>
        <source>C&amp;lose</source>
        <translation>&amp;Tutup</translation>
    </message>
    <message>
        <source>Close this window (Esc)</source>
        <translation>Tutup jendela ini (Esc)</translation>
    </message>
    <message>
        <source>&amp;Skin</source>
        <translation>&amp;Kulit</translation>
    </message>
    <message>
        <source>Skin tone</source>
        <translation>Warna kulit</translation>
    </message>
    <message>
        <source>none</source>
        <translation>tanpa</translation>
    </message>
    <message>
        <source>light</source>
        <translation>terang</translation>
    </message>
    <message>
        <source>medium light</source>
        <translation>agak terang</translation>
    </message>
    <message>
        <source>medium</source>
        <translation>sedang</translation>
    </message>
    <message>
        <source>medium dark</source>
        <translation>agak gelap</translation>
    </message>
    <message>
        <source>dark</source>
        <translation>gelap</translation>
    </message>
    <message>
        <source>The choice can&apos;t be kept: %1</source>
        <translation>Pilihan tidak dapat disimpan: %1</translation>
    </message>
    <message>
        <source>Groups</source>
        <translation>Kelompok</translation>
    </message>
    <message>
        <source>Last used</source>
        <translation>Terakhir dipakai</translation>
    </message>
    <message>
        <source>None was used yet</source>
        <translation>Belum ada yang dipakai</translation>
    </message>
    <message>
        <source>No emoji has these words in its name</source>
        <translation>Tidak ada emoji yang namanya memuat kata ini</translation>
    </message>
    <message>
        <source>Copied: %1 %2</source>
        <translation>Disalin: %1 %2</translation>
    </message>
    <message>
        <source>Inserted: %1 %2</source>
        <translation>Disisipkan: %1 %2</translation>
    </message>
    <message>
        <source>, but not remembered: %1</source>
        <translation>, tetapi tidak diingat: %1</translation>
    </message>
</context>
<context>
    <name>kibo::GridActions</name>
    <message>
        <source>&amp;Outbox</source>
        <translation>&amp;Outbox</translation>
    </message>
    <message>
        <source>&amp;Delete selected messages</source>
        <translation>&amp;Hapus pesan terpilih</translation>
    </message>
    <message>
        <source>&amp;Why is it waiting?</source>
        <translation>&amp;Mengapa menunggu?</translation>
    </message>
    <message>
        <source>C&amp;lear…</source>
        <translation>&amp;Kuras…</translation>
    </message>
    <message>
        <source>&amp;Inbox</source>
        <translation>&amp;Inbox</translation>
    </message>
    <message>
        <source>&amp;Reply…</source>
        <translation>&amp;Balas…</translation>
    </message>
    <message>
        <source>&amp;Empty the list</source>
        <translation>Be&amp;rsihkan daftar</translation>
    </message>
    <message>
        <source>&amp;Unsent</source>
        <translation>&amp;Tak terkirim</translation>
    </message>
    <message>
        <source>&amp;Queue selected messages again</source>
        <translation>&amp;Antrekan lagi pesan terpilih</translation>
    </message>
    <message>
        <source>&amp;Find in a list</source>
        <translation>&amp;Cari dalam daftar</translation>
    </message>
    <message>
        <source>Find in %1</source>
        <translation>Cari di %1</translation>
    </message>
    <message>
        <source>&amp;Copy selected lines</source>
        <translation>&amp;Salin baris terpilih</translation>
    </message>
    <message>
        <source>Copy &amp;all lines</source>
        <translation>Salin s&amp;emua baris</translation>
    </message>
    <message>
        <source>Please wait until the work in hand is done.</source>
        <translation>Tunggu sampai pekerjaan yang sedang berjalan selesai.</translation>
    </message>
    <message>
        <source>Looking at %L1 of %L2 selected lines</source>
        <translation>Memeriksa %L1 dari %L2 baris terpilih</translation>
    </message>
    <message>
        <source>Nothing was done: the list has changed meanwhile. Try once more.</source>
        <translation>Tidak ada yang dilakukan: daftar telah berubah. Coba sekali lagi.</translation>
    </message>
    <message>
        <source>Copying %L1 of %L2 lines</source>
        <translation>Menyalin %L1 dari %L2 baris</translation>
    </message>
    <message>
        <source>Nothing was copied: it is too much for the clipboard. Select fewer lines and press Ctrl+C.</source>
        <translation>Tidak ada yang disalin: terlalu banyak untuk papan klip. Pilih lebih sedikit baris lalu tekan Ctrl+C.</translation>
    </message>
    <message>
        <source>Nothing was copied: the list has changed meanwhile. Copy once more.</source>
        <translation>Tidak ada yang disalin: daftar telah berubah. Salin sekali lagi.</translation>
    </message>
</context>
<context>
    <name>kibo::MainWindow</name>
    <message>
        <source>New profile…</source>
        <translation>Profil baru…</translation>
    </message>
    <message>
        <source>%1 s left</source>
        <translation>sisa %1 dtk</translation>
    </message>
    <message>
        <source>%1:%2 left</source>
        <translation>sisa %1:%2</translation>
    </message>
    <message>
        <source>&amp;Gateway</source>
        <translation>&amp;Gateway</translation>
    </message>
    <message>
        <source>&amp;Open WhatsApp</source>
        <translation>&amp;Buka WhatsApp</translation>
    </message>
    <message>
        <source>&amp;Pause</source>
        <translation>&amp;Jeda</translation>
    </message>
    <message>
        <source>&amp;Refresh Outbox</source>
        <translation>&amp;Perbarui Outbox</translation>
    </message>
    <message>
        <source>Refresh I&amp;nbox</source>
        <translation>Perbarui I&amp;nbox</translation>
    </message>
    <message>
        <source>&amp;Stop</source>
        <translation>&amp;Stop</translation>
    </message>
    <message>
        <source>Run C&amp;leaner</source>
        <translation>Jalankan Pembe&amp;rsih</translation>
    </message>
    <message>
        <source>Start another &amp;instance</source>
        <translation>Mulai &amp;instans lain</translation>
    </message>
    <message>
        <source>Close &amp;All</source>
        <translation>Tutup s&amp;emua</translation>
    </message>
    <message>
        <source>E&amp;xit</source>
        <translation>&amp;Keluar</translation>
    </message>
    <message>
        <source>&amp;Queues</source>
        <translation>&amp;Antrean</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Tampilan</translation>
    </message>
    <message>
        <source>&amp;Outbox</source>
        <translation>&amp;Outbox</translation>
    </message>
    <message>
        <source>&amp;Inbox</source>
        <translation>&amp;Inbox</translation>
    </message>
    <message>
        <source>&amp;Unsent</source>
        <translation>&amp;Tak terkirim</translation>
    </message>
    <message>
        <source>List &amp;chats in Inbox</source>
        <translation>&amp;Daftar obrolan di Inbox</translation>
    </message>
    <message>
        <source>&amp;Sent messages…</source>
        <translation>Pesan terkiri&amp;m…</translation>
    </message>
    <message>
        <source>&amp;Program folder</source>
        <translation>&amp;Folder program</translation>
    </message>
    <message>
        <source>&amp;Log file</source>
        <translation>Berkas &amp;log</translation>
    </message>
    <message>
        <source>&amp;Tools</source>
        <translation>A&amp;lat</translation>
    </message>
    <message>
        <source>&amp;Send a message…</source>
        <translation>&amp;Kirim pesan…</translation>
    </message>
    <message>
        <source>Quick &amp;reply…</source>
        <translation>&amp;Balas cepat…</translation>
    </message>
    <message>
        <source>Se&amp;ttings…</source>
        <translation>&amp;Pengaturan…</translation>
    </message>
    <message>
        <source>&amp;Elements…</source>
        <translation>&amp;Elemen…</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Bantuan</translation>
    </message>
    <message>
        <source>&amp;Guide</source>
        <translation>&amp;Panduan</translation>
    </message>
    <message>
        <source>&amp;About</source>
        <translation>&amp;Tentang</translation>
    </message>
    <message>
        <source>Outbox: Refresh</source>
        <translation>Outbox: Perbarui</translation>
    </message>
    <message>
        <source>Inbox: Refresh</source>
        <translation>Inbox: Perbarui</translation>
    </message>
    <message>
        <source>Database: %1</source>
        <translation>Basis data: %1</translation>
    </message>
    <message>
        <source>The database is off</source>
        <translation>Basis data mati</translation>
    </message>
    <message>
        <source>No message is waiting</source>
        <translation>Tidak ada pesan yang menunggu</translation>
    </message>
    <message>
        <source>Open WhatsApp</source>
        <translation>Buka WhatsApp</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>Lanjut</translation>
    </message>
    <message>
        <source>Elements…</source>
        <translation>Elemen…</translation>
    </message>
    <message>
        <source>Program folder</source>
        <translation>Folder program</translation>
    </message>
    <message>
        <source>Try again</source>
        <translation>Coba lagi</translation>
    </message>
    <message>
        <source>&amp;Continue</source>
        <translation>Lan&amp;jut</translation>
    </message>
    <message>
        <source>Last message</source>
        <translation>Pesan terakhir</translation>
    </message>
    <message>
        <source>Message in progress</source>
        <translation>Pesan yang diproses</translation>
    </message>
    <message>
        <source>%L1 held</source>
        <translation>%L1 ditahan</translation>
    </message>
</context>
<context>
    <name>kibo::ManualScreen</name>
    <message>
        <source>Choose an emoji (Ctrl+E)</source>
        <translation>Pilih emoji (Ctrl+E)</translation>
    </message>
    <message>
        <source>Em&amp;oji</source>
        <translation>Em&amp;oji</translation>
    </message>
    <message>
        <source>Put the message into the queue (Ctrl+Enter)</source>
        <translation>Masukkan pesan ke antrean (Ctrl+Enter)</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Tutup</translation>
    </message>
    <message>
        <source>Close this window (Escape); what is typed stays</source>
        <translation>Tutup jendela ini (Escape); yang diketik tetap ada</translation>
    </message>
    <message>
        <source>Not queued. </source>
        <translation>Tidak diantrekan. </translation>
    </message>
    <message>
        <source>
Queue the message nevertheless?</source>
        <translation>
Tetap antrekan pesan ini?</translation>
    </message>
    <message>
        <source>Not queued: %1. All stays here as it is; try again when that is mended.</source>
        <translation>Tidak diantrekan: %1. Semua tetap di sini; coba lagi setelah itu diperbaiki.</translation>
    </message>
    <message>
        <source>Queued as message %1</source>
        <translation>Diantrekan sebagai pesan %1</translation>
    </message>
</context>
<context>
    <name>kibo::QrBox</name>
    <message>
        <source>Scan to log in</source>
        <translation>Pindai untuk masuk</translation>
    </message>
    <message>
        <source>On the phone: WhatsApp › Linked devices › Link a device, then point the camera at this code.</source>
        <translation>Di ponsel: WhatsApp › Perangkat tertaut › Tautkan perangkat, lalu arahkan kamera ke kode ini.</translation>
    </message>
</context>
<context>
    <name>kibo::QueueGrid</name>
    <message>
        <source>No line holds &quot;%1&quot;</source>
        <translation>Tidak ada baris yang memuat &quot;%1&quot;</translation>
    </message>
    <message>
        <source>&amp;Sort by</source>
        <translation>&amp;Urutkan menurut</translation>
    </message>
</context>
<context>
    <name>kibo::ReplyScreen</name>
    <message>
        <source>Quick reply</source>
        <translation>Balas cepat</translation>
    </message>
    <message>
        <source>&amp;Number</source>
        <translation>&amp;Nomor</translation>
    </message>
    <message>
        <source>&amp;Profile</source>
        <translation>&amp;Profil</translation>
    </message>
    <message>
        <source>C&amp;hat</source>
        <translation>Ob&amp;rolan</translation>
    </message>
    <message>
        <source>Last messages of the chat</source>
        <translation>Pesan terakhir obrolan ini</translation>
    </message>
    <message>
        <source>No message of this chat is known</source>
        <translation>Belum ada pesan dari obrolan ini</translation>
    </message>
    <message>
        <source>&amp;Message</source>
        <translation>P&amp;esan</translation>
    </message>
    <message>
        <source>&amp;Queue</source>
        <translation>&amp;Antrekan</translation>
    </message>
    <message>
        <source>The reply below is not queued yet. Queue it or clear it, then open the other message.</source>
        <translation>Balasan di bawah belum diantrekan. Antrekan atau kosongkan dulu, lalu buka pesan yang lain.</translation>
    </message>
</context>
<context>
    <name>kibo::SendScreen</name>
    <message>
        <source>Send a message</source>
        <translation>Kirim pesan</translation>
    </message>
    <message>
        <source>&amp;Queue</source>
        <translation>&amp;Antrekan</translation>
    </message>
    <message>
        <source>None. A path or an address, or drop a file here</source>
        <translation>Kosong. Tulis lokasi atau alamat, atau lepaskan berkas di sini</translation>
    </message>
    <message>
        <source>&amp;Number</source>
        <translation>&amp;Nomor</translation>
    </message>
    <message>
        <source>&amp;Profile</source>
        <translation>&amp;Profil</translation>
    </message>
    <message>
        <source>S&amp;ample</source>
        <translation>&amp;Contoh</translation>
    </message>
    <message>
        <source>A text that shows what texts can do</source>
        <translation>Teks yang menunjukkan kemampuan teks</translation>
    </message>
    <message>
        <source>&amp;Message</source>
        <translation>P&amp;esan</translation>
    </message>
    <message>
        <source>M&amp;edia</source>
        <translation>Me&amp;dia</translation>
    </message>
    <message>
        <source>&amp;Browse…</source>
        <translation>&amp;Jelajah…</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Berkas</translation>
    </message>
    <message>
        <source>B&amp;rowse…</source>
        <translation>Je&amp;lajah…</translation>
    </message>
    <message>
        <source>Ca&amp;lendar…</source>
        <translation>&amp;Kalender…</translation>
    </message>
    <message>
        <source>Choose the day</source>
        <translation>Pilih hari</translation>
    </message>
    <message>
        <source>Send &amp;time</source>
        <translation>&amp;Waktu kirim</translation>
    </message>
    <message>
        <source>How it may read</source>
        <translation>Begini jadinya</translation>
    </message>
    <message>
        <source>Preview %1 of 3</source>
        <translation>Pratinjau %1 dari 3</translation>
    </message>
    <message>
        <source>Choose the file</source>
        <translation>Pilih berkas</translation>
    </message>
    <message>
        <source>Browse for media</source>
        <translation>Cari media</translation>
    </message>
    <message>
        <source>Browse for a file</source>
        <translation>Cari berkas</translation>
    </message>
    <message>
        <source>Now :  </source>
        <translation>Kini :  </translation>
    </message>
    <message>
        <source>Day of the send time</source>
        <translation>Hari pengiriman</translation>
    </message>
</context>
<context>
    <name>kibo::SentScreen</name>
    <message>
        <source>Sent messages</source>
        <translation>Pesan terkirim</translation>
    </message>
    <message>
        <source>Part of the number or the text; empty: all</source>
        <translation>Sebagian nomor atau teks; kosong: semua</translation>
    </message>
    <message>
        <source>&amp;Find</source>
        <translation>&amp;Cari</translation>
    </message>
    <message>
        <source>Part of number or text</source>
        <translation>Sebagian nomor atau teks</translation>
    </message>
    <message>
        <source>f&amp;rom</source>
        <translation>&amp;dari</translation>
    </message>
    <message>
        <source>First day</source>
        <translation>Hari pertama</translation>
    </message>
    <message>
        <source>&amp;to</source>
        <translation>sa&amp;mpai</translation>
    </message>
    <message>
        <source>Last day</source>
        <translation>Hari terakhir</translation>
    </message>
    <message>
        <source>&amp;Search</source>
        <translation>&amp;Telusuri</translation>
    </message>
    <message>
        <source>Look for sent messages (Enter)</source>
        <translation>Cari pesan terkirim (Enter)</translation>
    </message>
    <message>
        <source>found</source>
        <translation>ditemukan</translation>
    </message>
    <message>
        <source>Send a&amp;gain</source>
        <translation>Kirim la&amp;gi</translation>
    </message>
    <message>
        <source>Put the selected messages into the outbox once more</source>
        <translation>Masukkan lagi pesan terpilih ke outbox</translation>
    </message>
    <message>
        <source>&amp;Delete</source>
        <translation>&amp;Hapus</translation>
    </message>
    <message>
        <source>Delete the selected messages from the sent log (Del)</source>
        <translation>Hapus pesan terpilih dari catatan terkirim (Del)</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>Sa&amp;lin</translation>
    </message>
    <message>
        <source>Copy all lines; Ctrl+C copies the selected ones</source>
        <translation>Salin semua baris; Ctrl+C menyalin yang terpilih</translation>
    </message>
    <message>
        <source>E&amp;xport…</source>
        <translation>&amp;Ekspor…</translation>
    </message>
    <message>
        <source>Save all lines as a CSV file</source>
        <translation>Simpan semua baris sebagai berkas CSV</translation>
    </message>
    <message>
        <source>C&amp;lose</source>
        <translation>Tut&amp;up</translation>
    </message>
    <message>
        <source>Close this window (Esc)</source>
        <translation>Tutup jendela ini (Esc)</translation>
    </message>
    <message>
        <source>&amp;Stop</source>
        <translation>&amp;Stop</translation>
    </message>
</context>
<context>
    <name>kibo::SettingsScreen</name>
    <message>
        <source>Settings</source>
        <translation>Pengaturan</translation>
    </message>
    <message>
        <source>Find a setting</source>
        <translation>Cari pengaturan</translation>
    </message>
    <message>
        <source>Pages</source>
        <translation>Halaman</translation>
    </message>
    <message>
        <source>Try &amp;database</source>
        <translation>Coba &amp;basis data</translation>
    </message>
    <message>
        <source>Try &amp;browser</source>
        <translation>Coba &amp;peramban</translation>
    </message>
    <message>
        <source>Try b&amp;ot</source>
        <translation>Coba b&amp;ot</translation>
    </message>
    <message>
        <source>Edit &amp;file</source>
        <translation>Sunting b&amp;erkas</translation>
    </message>
    <message>
        <source>A&amp;PI</source>
        <translation>AP&amp;I</translation>
    </message>
    <message>
        <source>&amp;Guide</source>
        <translation>Pa&amp;nduan</translation>
    </message>
    <message>
        <source>Each change is written at once, and counts from the next start on.</source>
        <translation>Setiap perubahan langsung ditulis dan berlaku mulai start berikutnya.</translation>
    </message>
    <message>
        <source>&amp;Restart Kibo</source>
        <translation>&amp;Mulai ulang Kibo</translation>
    </message>
    <message>
        <source>Restart</source>
        <translation>Mulai ulang</translation>
    </message>
    <message>
        <source>Shall Kibo end and start again now, so that the settings count?</source>
        <translation>Hentikan dan mulai ulang Kibo sekarang, agar pengaturan berlaku?</translation>
    </message>
    <message>
        <source>&amp;Save</source>
        <translation>&amp;Simpan</translation>
    </message>
    <message>
        <source>No setting has these words.</source>
        <translation>Tidak ada pengaturan dengan kata ini.</translation>
    </message>
    <message>
        <source>Trying…</source>
        <translation>Mencoba…</translation>
    </message>
    <message>
        <source>Written. It counts from the next start on.</source>
        <translation>Tertulis. Berlaku mulai start berikutnya.</translation>
    </message>
</context>
<context>
    <name>kibo::WindowControls</name>
    <message>
        <source>Find</source>
        <translation>Cari</translation>
    </message>
    <message>
        <source>held</source>
        <translation>ditahan</translation>
    </message>
    <message>
        <source>&amp;Open WhatsApp</source>
        <translation>Buka &amp;WhatsApp</translation>
    </message>
    <message>
        <source>&amp;Pause</source>
        <translation>&amp;Jeda</translation>
    </message>
    <message>
        <source>&amp;Stop</source>
        <translation>&amp;Stop</translation>
    </message>
    <message>
        <source>P&amp;rofile</source>
        <translation>P&amp;rofil</translation>
    </message>
    <message>
        <source>Du&amp;mmy</source>
        <translation>Du&amp;mmy</translation>
    </message>
    <message>
        <source>Number whose chat is opened between messages</source>
        <translation>Nomor yang obrolannya dibuka di antara pesan</translation>
    </message>
    <message>
        <source>Hid&amp;e Chrome</source>
        <translation>S&amp;embunyi Chrome</translation>
    </message>
    <message>
        <source>Database off</source>
        <translation>Basis data mati</translation>
    </message>
    <message>
        <source>Brea&amp;k off</source>
        <translation>Batalka&amp;n</translation>
    </message>
    <message>
        <source>Sending</source>
        <translation>Mengirim</translation>
    </message>
    <message>
        <source>Reading</source>
        <translation>Membaca</translation>
    </message>
    <message>
        <source>Out&amp;box</source>
        <translation>Outbo&amp;x</translation>
    </message>
    <message>
        <source>Re&amp;fresh</source>
        <translation>&amp;Perbarui</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Salin</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Hapus</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Kuras</translation>
    </message>
    <message>
        <source>&amp;Inbox</source>
        <translation>&amp;Inbox</translation>
    </message>
    <message>
        <source>Messages without a status</source>
        <translation>Pesan tanpa status</translation>
    </message>
    <message>
        <source>Reading is off</source>
        <translation>Tak membaca</translation>
    </message>
    <message>
        <source>Ne&amp;west first</source>
        <translation>Terbaru &amp;dulu</translation>
    </message>
    <message>
        <source>Newest messages first</source>
        <translation>Pesan terbaru dahulu</translation>
    </message>
    <message>
        <source>No message has arrived</source>
        <translation>Belum ada pesan masuk</translation>
    </message>
    <message>
        <source>Refresh</source>
        <translation>Perbarui</translation>
    </message>
    <message>
        <source>Empty</source>
        <translation>Bersih</translation>
    </message>
    <message>
        <source>No message has failed</source>
        <translation>Tidak ada pesan yang gagal</translation>
    </message>
    <message>
        <source>&amp;Unsent</source>
        <translation>Tak ter&amp;kirim</translation>
    </message>
    <message>
        <source>Queue again</source>
        <translation>Antrekan lagi</translation>
    </message>
    <message>
        <source>&amp;Log</source>
        <translation>L&amp;og</translation>
    </message>
    <message>
        <source>Message in progress</source>
        <translation>Pesan yang diproses</translation>
    </message>
    <message>
        <source>Id</source>
        <translation>Id</translation>
    </message>
    <message>
        <source>To</source>
        <translation>Ke</translation>
    </message>
    <message>
        <source>Nothing is being sent</source>
        <translation>Tidak ada yang dikirim</translation>
    </message>
    <message>
        <source>Media</source>
        <translation>Media</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Berkas</translation>
    </message>
    <message>
        <source>Pace</source>
        <translation>Laju</translation>
    </message>
    <message>
        <source>sent</source>
        <translation>terkirim</translation>
    </message>
    <message>
        <source>failed</source>
        <translation>gagal</translation>
    </message>
    <message>
        <source>waiting</source>
        <translation>menunggu</translation>
    </message>
    <message>
        <source>Rows with wa_mode 3: they stay until their mode is set back to 0</source>
        <translation>Baris dengan wa_mode 3: tetap tinggal sampai modenya dikembalikan ke 0</translation>
    </message>
    <message>
        <source>Sent in this batch</source>
        <translation>Dalam kelompok ini</translation>
    </message>
    <message>
        <source>Break</source>
        <translation>Istirahat</translation>
    </message>
</context>
</TS>
